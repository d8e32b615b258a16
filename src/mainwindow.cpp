#include "mainwindow.h"

#include "texts.h"
#include "ui_mainwindow.h"

#include <QStatusTipEvent>
#include <QTimer>

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui_MainWindow)
{
    ui->setupUi(this);

    createTimer(scanTimer, SLOT(timerforScan()));
    createTimer(changeTimer, SLOT(change_parametersofmodbus()));
    createTimer(scanAllTimer, SLOT(scan_pa_modbus_all()));
    createTimer(changeModeTimer, SLOT(change_mode_TCP()));

    setWindowTitle(text::windowTitle);
    setWindowIcon(QIcon(windowIconPath));

    setConnectionControls(false);
    ui->lineEdit_MAC->setEnabled(false);
    ui->lineEdit_version->setEnabled(false);

    connect(ui->conbox0, SIGNAL(currentIndexChanged(int)), this, SLOT(universal_show(int)));
    checkCustomDevicePathPolicy();
    // Not queued: a reply that arrived before a tick must be handled before it, or it would be
    // attributed to the next command.
    connect(&serial, &QSerialPort::readyRead, this, &MainWindow::readData);
    connect(&serial, &QSerialPort::errorOccurred, this, &MainWindow::handleError);
}

MainWindow::~MainWindow()
{
    delete ui;
    if (serial.isOpen()) {
        serial.close();
        scanTimer->stop();
        changeTimer->stop();
        changeModeTimer->stop();
    }
}

/// Ignores status tips. No action has one, so the menu sends empty ones, which would clear the
/// status.
bool MainWindow::event(QEvent *event)
{
    return event->type() == QEvent::StatusTip || QMainWindow::event(event);
}

void MainWindow::createTimer(QTimer *&timer, const char *tickSlot)
{
    timer = new QTimer(this);
    connect(timer, SIGNAL(timeout()), this, tickSlot);
    timer->setInterval(Sequence::tickMs);
}

void MainWindow::Sequence::start() const
{
    timer->start(tickMs);
}

void MainWindow::Sequence::stop() const
{
    timer->stop();
    step = 0;
}

MainWindow::Sequence MainWindow::readSequence(Dialect dialect)
{
    return dialect == Dialect::Fixed ? Sequence{scanTimer, scanStep}
                                     : Sequence{scanAllTimer, scanAllStep};
}

MainWindow::Sequence MainWindow::writeSequence(Dialect dialect)
{
    return dialect == Dialect::Fixed ? Sequence{changeTimer, changeStep}
                                     : Sequence{changeModeTimer, changeModeStep};
}

void MainWindow::stopAllSequences()
{
    for (const Dialect dialect : {Dialect::Fixed, Dialect::Universal}) {
        readSequence(dialect).stop();
        writeSequence(dialect).stop();
    }
}

std::optional<ModuleKind> MainWindow::selectedKind() const
{
    return moduleKindAt(ui->conbox0->currentIndex());
}

QString MainWindow::nameOf(ModuleKind kind) const
{
    return ui->conbox0->itemText(static_cast<int>(kind)).trimmed();
}

QWidget *MainWindow::fieldOf(const Parameter &parameter) const
{
    return std::visit([this](auto field) -> QWidget * { return ui->*field; }, parameter.field);
}

void MainWindow::setMark(const Parameter &parameter, const char *styleSheet)
{
    fieldOf(parameter)->setStyleSheet(styleSheet);
}

void MainWindow::universal_show(int index)
{
    const std::optional<ModuleKind> kind = moduleKindAt(index);
    if (!kind)
        return;
    const bool universal = kind == ModuleKind::Universal;
    const bool client = kind != ModuleKind::TcpRtu;

    for (const Parameter &parameter : parameters()) {
        QWidget *field = fieldOf(parameter);
        // The hidden group hides them.
        if (!client && parameter.isUniversalOnly() && ui->groupBox_client->isAncestorOf(field))
            continue;
        const bool shown = parameter.belongsTo(*kind);
        field->setVisible(shown);
        (ui->*parameter.label)->setVisible(shown);
        if (parameter.offSwitch)
            (ui->*parameter.offSwitch)->setVisible(shown);
    }
    ui->groupBox_client->setVisible(client);
    ui->reset_allparameters->setVisible(universal);
    setFixedSize(750, universal ? 550 : 450);
}

void MainWindow::styleclear()
{
    for (const Parameter &parameter : parameters()) {
        if (!parameter.has(KeepsMarkAtStyleclear))
            setMark(parameter, mark::none);
    }
}

void MainWindow::clearMarksOfFixedKinds()
{
    for (const Parameter &parameter : parameters()) {
        if (!parameter.isUniversalOnly())
            setMark(parameter, mark::none);
    }
}

void MainWindow::on_checkBox_clicked(bool checked)
{
    ui->lineEdit_tcp_id->setEnabled(!checked);
    ui->lineEdit_tcp_id->setStyleSheet(checked ? mark::lilac : mark::none);
    if (checked)
        ui->lineEdit_tcp_id->clear();
}
