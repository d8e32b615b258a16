#include "mainwindow.h"

#include "texts.h"
#include "ui_mainwindow.h"

#include <QMessageBox>
#include <QSerialPortInfo>
#include <QSignalBlocker>
#include <QSocketNotifier>
#include <QTimer>

#include <poll.h>

void MainWindow::checkCustomDevicePathPolicy()
{
    ui->serialPortInfoListBox->clear();
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports)
        ui->serialPortInfoListBox->addItem(port.portName());
}

void MainWindow::on_scanport_clicked()
{
    checkCustomDevicePathPolicy();
}

void MainWindow::on_connect_clicked()
{
    const QString label = ui->connect->text();
    if (label == text::connectPort) {
        openport();
        if (serial.isOpen())
            ui->connect->setText(text::disconnectPort);
    } else if (label == text::disconnectPort) {
        ui->connect->setText(text::connectPort);
        closeport();
        stopAllSequences();
        ui->scan_parameters->setText(text::scan);
        ui->applyButton->setText(text::apply);
    }
}

void MainWindow::openport()
{
    universal_show(ui->conbox0->currentIndex());
    serial.setPortName(ui->serialPortInfoListBox->currentText());
    {
        // A failing open is reported below. Its errorOccurred would report a lost port as well.
        const QSignalBlocker blocker(serial);
        serial.open(QIODevice::ReadWrite);
    }
    if (serial.isOpen()) {
        watchForHangUp();
        setConnectionControls(true);
        ui->statusbar->showMessage(text::connected);
        return;
    }
    QMessageBox::critical(this, tr(text::accessDenied), text::connectionError);
    ui->statusbar->showMessage(text::portDenied);
    scanTimer->stop();
    changeTimer->stop();
    ui->connect->setText(text::connectPort);
}

void MainWindow::closeport()
{
    if (!serial.isOpen())
        return;
    serial.close();
    setConnectionControls(false);
    ui->statusbar->showMessage(text::disconnected);
    readSequence(Dialect::Fixed).stop();
    writeSequence(Dialect::Fixed).stop();
}

void MainWindow::setConnectionControls(bool open)
{
    for (QWidget *control :
         {ui->scan_parameters, ui->applyButton, ui->Reset, ui->reset_allparameters})
        control->setEnabled(open);
    for (QWidget *control :
         std::initializer_list<QWidget *>{ui->conbox0, ui->serialPortInfoListBox, ui->scanport})
        control->setEnabled(!open);
}

/// Handles a hung-up line as a lost port. Not every version of Qt SerialPort reports it.
void MainWindow::watchForHangUp()
{
    auto *notifier = new QSocketNotifier(serial.handle(), QSocketNotifier::Exception, this);
    connect(notifier, &QSocketNotifier::activated, this, [this] {
        if (isPortHungUp())
            handleError(QSerialPort::ResourceError);
    });
    connect(&serial, &QSerialPort::aboutToClose, notifier, [notifier] {
        // Not deleted here, because its own signal may have closed the port.
        notifier->setEnabled(false);
        notifier->deleteLater();
    });
}

bool MainWindow::isPortHungUp() const
{
    pollfd line{serial.handle(), 0, 0};
    return ::poll(&line, 1, 0) > 0 && (line.revents & POLLHUP) != 0;
}

void MainWindow::handleError(QSerialPort::SerialPortError error)
{
    if (error != QSerialPort::ResourceError)
        return;

    closeport();
    if (restartExpected) {
        ui->connect->setText(text::connectPort);
        return;
    }
    stopAllSequences();
    QMessageBox::critical(this, tr(text::criticalError), text::connectionError);
    ui->connect->setText(text::connectPort);
    ui->applyButton->setText(text::apply);
    styleclear();
}

/// Tells the user that the module is silent, then closes the port. The sequence keeps ticking until
/// the box is closed.
void MainWindow::reportNoConnection(ModuleKind kind, const Sequence &sequence)
{
    // This runs in the timer's own slot, in which the timer does not fire unless it is restarted.
    sequence.timer->start();
    QMessageBox::critical(this, tr(text::connectionError),
                          QString(text::noConnection).arg(nameOf(kind)));
    sequence.stop();
    closeport();
    ui->connect->setText(text::connectPort);
    ui->scan_parameters->setText(text::scan);
}
