#include "mainwindow.h"

#include "module_protocol.h"
#include "texts.h"
#include "ui_mainwindow.h"

#include <QDebug>
#include <QMessageBox>
#include <QTimer>

namespace {

bool setField(QLineEdit *field, const Codes & /*codes*/, const QString &value)
{
    if (value.isEmpty())
        return false;
    field->setText(value);
    return true;
}

bool setField(QComboBox *field, const Codes &codes, const QString &value)
{
    const int item = protocol::itemOf(codes, value);
    if (item < 0)
        return false;
    field->setCurrentIndex(item);
    return true;
}

} // namespace

/// Handles one delivery. Boxes are opened by queued calls, because readyRead is not emitted while
/// its slot runs.
void MainWindow::readData()
{
    replyText = protocol::decodeReply(serial.readAll());
    qDebug() << "data 2:" + replyText;
    if (replyText.isEmpty()) {
        QMetaObject::invokeMethod(this, &MainWindow::reportEmptyDelivery, Qt::QueuedConnection);
        return;
    }
    qDebug() << "data 2:" + replyText;

    // The RTU-TCP list serves TCP-RTU too, because it begins with the whole TCP-RTU list.
    if (changeTimer->isActive())
        handleWriteReply(ModuleKind::RtuTcp);
    else if (scanTimer->isActive())
        handleQueryReply(ModuleKind::RtuTcp);
    else if (changeModeTimer->isActive())
        handleWriteReply(ModuleKind::Universal);
    else if (scanAllTimer->isActive())
        handleQueryReply(ModuleKind::Universal);
}

/// Limits the number of boxes, because a line may deliver nothing but line ends.
void MainWindow::reportEmptyDelivery()
{
    constexpr int maxBoxes = 10;
    if (findChildren<QMessageBox *>().size() < maxBoxes)
        QMessageBox::critical(this, tr(text::emptyDelivery), text::connectionError);
}

/// Handles the reply to the query that the previous step sent.
void MainWindow::handleQueryReply(ModuleKind kind)
{
    const QVector<const Parameter *> queried = readList(kind);
    const int queryStep = readSequence(dialectOf(kind)).step - 1;
    if (queryStep >= 0 && queryStep < queried.size())
        showReply(*queried[queryStep], dialectOf(kind));
}

void MainWindow::showReply(const Parameter &parameter, Dialect dialect)
{
    const QString value = protocol::valueField(parameter, replyText);
    if (parameter.offSwitch) {
        showSwitchableReply(parameter, value);
        return;
    }
    const bool taken = std::visit(
        [&](auto field) { return setField(ui->*field, parameter.codes(dialect), value); },
        parameter.field);
    setMark(parameter, taken ? mark::green : mark::red);
}

/// Shows the value of a parameter that can be switched off. An empty value is marked as off.
void MainWindow::showSwitchableReply(const Parameter &parameter, const QString &value)
{
    setMark(parameter, value.isEmpty() ? mark::lilac : mark::green);
    if (value.isEmpty())
        return;
    const bool off = value == QLatin1String(protocol::off);
    QLineEdit *field = ui->*std::get<QLineEdit * Ui_MainWindow::*>(parameter.field);
    field->setText(off ? QString() : value);
    field->setEnabled(!off);
    (ui->*parameter.offSwitch)->setChecked(off);
}

/// Handles the reply to a write command. The command was sent at an even step; its reply may arrive
/// before or after the idle tick that follows.
void MainWindow::handleWriteReply(ModuleKind kind)
{
    const QVector<const Parameter *> written = writeList(kind);
    const Sequence sequence = writeSequence(dialectOf(kind));
    const int command = (sequence.step - 1) / 2;
    if (sequence.step < 1 || command >= written.size())
        return;

    const Parameter &parameter = *written[command];
    switch (protocol::classifyWriteReply(parameter, dialectOf(kind), replyText)) {
    case protocol::WriteReply::Acknowledged:
        setMark(parameter, mark::green);
        if (command < checkedCommandCount)
            writeAcknowledged = true;
        break;
    case protocol::WriteReply::Refused:
        setMark(parameter, mark::red);
        sequence.stop();
        QMetaObject::invokeMethod(
            this, [this, &parameter] { reportRefusal(parameter); }, Qt::QueuedConnection);
        break;
    case protocol::WriteReply::Ignored:
        break;
    }
}

void MainWindow::reportRefusal(const Parameter &parameter)
{
    QMessageBox::critical(this, tr(text::error),
                          parameter.has(WriteErrorWithoutLeadingSpace)
                              ? text::writeErrorWithoutLeadingSpace
                              : text::writeError);
    styleclear();
    ui->applyButton->setText(text::apply);
}
