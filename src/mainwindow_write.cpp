#include "mainwindow.h"

#include "module_protocol.h"
#include "texts.h"
#include "ui_mainwindow.h"

#include <QDebug>
#include <QMessageBox>

namespace {

/// The idle step that follows the last of the checked commands.
constexpr int acknowledgementCheckStep = 2 * checkedCommandCount - 1;

QByteArray valueIn(const QLineEdit *field, const Codes & /*codes*/)
{
    return field->text().toLatin1();
}

QByteArray valueIn(const QComboBox *field, const Codes &codes)
{
    return protocol::codeOf(codes, field->currentIndex());
}

/// The name of a step in the debug output of the universal write, or nullptr.
const char *traceMarker(int step)
{
    switch (step) {
    case 0:
        return "case_1";
    case 2:
        return "case_3";
    case acknowledgementCheckStep:
        return "case_2";
    default:
        return nullptr;
    }
}

} // namespace

void MainWindow::on_applyButton_clicked()
{
    const QString label = ui->applyButton->text();
    if (label == text::apply && ui->scan_parameters->text() == text::scan && serial.isOpen()) {
        ui->applyButton->setText(text::stopApply);
        if (const std::optional<ModuleKind> kind = selectedKind())
            startWrite(*kind);
    } else if (label == text::stopApply) {
        ui->applyButton->setText(text::apply);
        readSequence(Dialect::Fixed).stop();
        writeSequence(Dialect::Fixed).stop();
        writeSequence(Dialect::Universal).stop();
        styleclear();
    }
}

void MainWindow::startWrite(ModuleKind kind)
{
    const Sequence sequence = writeSequence(dialectOf(kind));
    sequence.step = 0;
    sequence.start();
    if (kind != ModuleKind::Universal) {
        readSequence(Dialect::Fixed).stop();
        clearMarksOfFixedKinds();
    }
}

void MainWindow::change_parametersofmodbus()
{
    const std::optional<ModuleKind> kind = selectedKind();
    if (kind == ModuleKind::RtuTcp)
        change_pa_modbus_RTU_TCP();
    else if (kind == ModuleKind::TcpRtu)
        change_pa_modbus_TCP_RTU();
}

void MainWindow::change_pa_modbus_TCP_RTU()
{
    writeStep(ModuleKind::TcpRtu);
}

void MainWindow::change_pa_modbus_RTU_TCP()
{
    writeStep(ModuleKind::RtuTcp);
}

void MainWindow::change_mode_TCP()
{
    readSequence(Dialect::Fixed).stop();
    writeSequence(Dialect::Fixed).stop();
    readSequence(Dialect::Universal).stop();
    writeStep(ModuleKind::Universal);
}

/// Executes one tick of a write. Even steps send a command, odd steps wait for its acknowledgement,
/// and the last step restarts the module.
void MainWindow::writeStep(ModuleKind kind)
{
    const QVector<const Parameter *> written = writeList(kind);
    const Sequence sequence = writeSequence(dialectOf(kind));
    const int step = sequence.step++;
    const auto lastStep = 2 * written.size();

    const char *marker = traceMarker(step);
    if (kind == ModuleKind::Universal && marker)
        qDebug() << replyText << marker;

    if (step == lastStep)
        endWrite(kind);
    else if (step == acknowledgementCheckStep)
        checkAcknowledgement(kind);
    else if (step < lastStep && step % 2 == 0)
        sendWriteCommand(*written[step / 2], dialectOf(kind));
}

void MainWindow::sendWriteCommand(const Parameter &parameter, Dialect dialect)
{
    const QByteArray command = parameter.writeCommand + valueToWrite(parameter, dialect);
    serial.write(command);
    if (!parameter.has(dialect == Dialect::Fixed ? TracedInFixedDialect : TracedInUniversalDialect))
        return;
    if (parameter.traceLabel)
        qDebug() << parameter.traceLabel << command;
    else
        qDebug() << command;
}

QByteArray MainWindow::valueToWrite(const Parameter &parameter, Dialect dialect) const
{
    if (parameter.offSwitch && (ui->*parameter.offSwitch)->isChecked())
        return protocol::off;
    return std::visit([&](auto field) { return valueIn(ui->*field, parameter.codes(dialect)); },
                      parameter.field);
}

void MainWindow::checkAcknowledgement(ModuleKind kind)
{
    if (writeAcknowledged)
        return;
    reportNoConnection(kind, writeSequence(dialectOf(kind)));
    ui->applyButton->setText(text::apply);
}

void MainWindow::endWrite(ModuleKind kind)
{
    const Dialect dialect = dialectOf(kind);
    serial.write(protocol::restartAfterWrite(dialect));
    writeSequence(dialect).stop();
    restartExpected = true;
    ui->applyButton->setText(text::apply);
    QMessageBox::information(this, tr(text::writeResult),
                             QString(text::writeSucceeded).arg(nameOf(kind)));
    if (kind == ModuleKind::Universal)
        styleclear();
    else
        clearMarksOfFixedKinds();
}

void MainWindow::on_Reset_clicked()
{
    serial.write(protocol::restart);
    restartExpected = true;
}

void MainWindow::on_reset_allparameters_clicked()
{
    Reset_Default();
}

void MainWindow::Reset_Default()
{
    QMessageBox box;
    const QAbstractButton *yes = box.addButton(tr(text::yes), QMessageBox::YesRole);
    box.addButton(tr(text::no), QMessageBox::NoRole);
    box.setWindowTitle(text::factoryReset);
    box.setWindowIcon(QIcon(windowIconPath));
    box.setText(tr(text::confirmFactoryReset));
    box.exec();
    if (box.clickedButton() != yes)
        return;
    serial.write(protocol::loadFactorySettings);
    restartExpected = true;
    qDebug() << "сброс параметры " + replyText;
}
