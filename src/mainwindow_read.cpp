#include "mainwindow.h"

#include "texts.h"
#include "ui_mainwindow.h"

#include <QDebug>
#include <QTimer>

namespace {

/// The step that tests whether anything has arrived, normally the reply to the first query.
constexpr int connectionTestStep = 1;

void clearField(QLineEdit *field)
{
    field->clear();
}

void clearField(QComboBox *field)
{
    field->setCurrentIndex(0);
}

} // namespace

void MainWindow::on_scan_parameters_clicked()
{
    const QString label = ui->scan_parameters->text();
    if (label == text::scan) {
        ui->scan_parameters->setText(text::stopScan);
        ui->applyButton->setText(text::apply);
        // Both, because a file that was loaded during a write may have changed the kind.
        writeSequence(Dialect::Fixed).stop();
        writeSequence(Dialect::Universal).stop();
        if (const std::optional<ModuleKind> kind = selectedKind())
            startRead(*kind);
    } else if (label == text::stopScan) {
        ui->scan_parameters->setText(text::scan);
        stopAllSequences();
    }
}

void MainWindow::startRead(ModuleKind kind)
{
    const Sequence sequence = readSequence(dialectOf(kind));
    if (sequence.timer->isActive()) {
        sequence.stop();
        return;
    }
    sequence.start();
    resetFields(kind);
}

/// Clears the fields before a read. For either fixed kind, clears the fields of both.
void MainWindow::resetFields(ModuleKind kind)
{
    for (const Parameter &parameter : parameters()) {
        if (parameter.isUniversalOnly() && kind != ModuleKind::Universal)
            continue;
        std::visit([this](auto field) { clearField(ui->*field); }, parameter.field);
        if (!parameter.has(KeepsMarkAtScanStart))
            setMark(parameter, mark::none);
    }
}

void MainWindow::timerforScan()
{
    const std::optional<ModuleKind> kind = selectedKind();
    if (kind == ModuleKind::RtuTcp)
        scan_pa_modbus_RTU_TCP();
    else if (kind == ModuleKind::TcpRtu)
        scan_pa_modbus_TCP_RTU();
}

void MainWindow::scan_pa_modbus_TCP_RTU()
{
    readStepOnOpenPort(ModuleKind::TcpRtu);
}

void MainWindow::scan_pa_modbus_RTU_TCP()
{
    readStepOnOpenPort(ModuleKind::RtuTcp);
}

void MainWindow::scan_pa_modbus_all()
{
    readStep(ModuleKind::Universal);
}

void MainWindow::readStepOnOpenPort(ModuleKind kind)
{
    if (serial.isOpen()) {
        readStep(kind);
        return;
    }
    scanTimer->stop();
    qDebug() << "error connecting";
}

void MainWindow::readStep(ModuleKind kind)
{
    const QVector<const Parameter *> queried = readList(kind);
    const Sequence sequence = readSequence(dialectOf(kind));
    const int step = sequence.step++;

    if (step > queried.size())
        return;
    if (step == queried.size()) {
        endRead(kind);
        return;
    }
    if (step == connectionTestStep) {
        if (kind == ModuleKind::TcpRtu)
            qDebug() << replyText << "connection test";
        if (replyText.isEmpty()) {
            reportNoConnection(kind, sequence);
            return;
        }
    }
    serial.write(queried[step]->query);
}

void MainWindow::endRead(ModuleKind kind)
{
    readSequence(dialectOf(kind)).stop();
    ui->scan_parameters->setText(text::scan);
    if (kind != ModuleKind::Universal) {
        clearMarksOfFixedKinds();
        return;
    }
    for (const Parameter &parameter : parameters()) {
        const bool readOnly = !parameter.writeCommand;
        const bool off = parameter.offSwitch && (ui->*parameter.offSwitch)->isChecked();
        setMark(parameter, readOnly || off ? mark::lilac : mark::none);
    }
}
