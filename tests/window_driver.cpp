#include "window_driver.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QStatusBar>

Boxes::Boxes()
{
    look();
}

QList<QMessageBox *> Boxes::open()
{
    QList<QMessageBox *> boxes;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *widget : windows) {
        auto *box = qobject_cast<QMessageBox *>(widget);
        if (box && box->isVisible())
            boxes.append(box);
    }
    return boxes;
}

void Boxes::look()
{
    // First, for a handler may wait, and other boxes open meanwhile.
    QTimer::singleShot(2, this, &Boxes::look);
    known.removeAll(nullptr);
    const QList<QMessageBox *> boxes = open();
    for (QMessageBox *box : boxes) {
        if (known.contains(box))
            continue;
        known.append(box);
        seen.append(box->windowTitle() + ": " + box->text());
        if (handle)
            handle(box);
        else
            box->accept();
    }
}

namespace {

WindowDriver *driver = nullptr;

void keepDebugLine(QtMsgType type, const QMessageLogContext & /*context*/, const QString &line)
{
    if (type == QtDebugMsg && driver)
        driver->debugLines.append(line);
    else if (type != QtWarningMsg) // the library warns of what the window ignores on purpose
        fprintf(stderr, "%s\n", qPrintable(line));
}

} // namespace

WindowDriver::WindowDriver(Kind kind)
    : module(kind)
{
    driver = this;
    qInstallMessageHandler(keepDebugLine);
    module.faults.delayMs = 1;
    QObject::connect(&module, &simulator::SimulatedModule::commandReceived,
                     [this](const QByteArray &command) { commands.append(command); });
    if (!module.start())
        qFatal("%s", qPrintable(module.errorString()));
    choosePort(module.portPath());
    find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(kind));
    window.show();
}

WindowDriver::~WindowDriver()
{
    driver = nullptr;
    qInstallMessageHandler(nullptr);
}

void WindowDriver::choosePort(const QString &port)
{
    auto *ports = find<QComboBox>("serialPortInfoListBox");
    ports->addItem(port);
    ports->setCurrentIndex(ports->count() - 1);
}

void WindowDriver::connectPort()
{
    click("connect");
    QTRY_COMPARE(status(), QString("Connected"));
}

QString WindowDriver::text(const QString &name)
{
    auto *widget = find<QWidget>(name);
    if (auto *combo = qobject_cast<QComboBox *>(widget))
        return '#' + QString::number(combo->currentIndex());
    return widget->property("text").toString();
}

void WindowDriver::enter(const QString &name, const QString &text)
{
    if (text.startsWith('#'))
        find<QComboBox>(name)->setCurrentIndex(text.mid(1).toInt());
    else
        find<QLineEdit>(name)->setText(text);
}

QString WindowDriver::status()
{
    return window.statusBar()->currentMessage();
}

QTimer *WindowDriver::timer(Sequence sequence)
{
    return window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly).at(sequence);
}

QTimer *WindowDriver::activeTimer()
{
    for (const Sequence sequence : {Scan, Change, ScanAll, ChangeMode}) {
        if (timer(sequence)->isActive())
            return timer(sequence);
    }
    return nullptr;
}

void WindowDriver::slowDown()
{
    activeTimer()->setInterval(3600 * 1000);
}

void WindowDriver::ticksEvery(int ms)
{
    activeTimer()->setInterval(ms);
}

void WindowDriver::tick()
{
    QTimer *timer = activeTimer();
    if (!timer)
        return;
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}

bool WindowDriver::tickCommand()
{
    const int before = commands.size();
    tick();
    return QTest::qWaitFor([&] { return commands.size() > before; });
}

bool WindowDriver::tickAndReply()
{
    const int before = deliveriesHandled();
    return tickCommand() && QTest::qWaitFor([&] { return deliveriesHandled() > before; });
}

bool WindowDriver::deliver(const QByteArray &bytes)
{
    const int before = deliveriesHandled();
    module.send(bytes);
    return QTest::qWaitFor([&] { return deliveriesHandled() > before; });
}

int WindowDriver::deliveriesHandled() const
{
    // The window traces a delivery as soon as it comes and, unless it is empty, again.
    int handled = 0;
    for (int i = 0; i < debugLines.size(); ++i) {
        if (!debugLines[i].startsWith("\"data 2:"))
            continue;
        ++handled;
        if (debugLines[i] != "\"data 2:\"")
            ++i;
    }
    return handled;
}

bool WindowDriver::readWholeModule()
{
    click("scan_parameters");
    slowDown();
    for (int i = 0; i < module.queries().size(); ++i) {
        if (!tickAndReply())
            return false;
    }
    tick();
    return !activeTimer();
}

QVector<ParameterCase> parametersOf(Kind kind)
{
    const bool universal = kind == Kind::Universal;
    QVector<ParameterCase> list{
        {"MAC", "lineEdit_MAC", "02-00-00-AB-CD-EF", "02-00-00-AB-CD-EF"},
        {"ip", "lineEdit_ip", "192.168.100.200", "192.168.100.200"},
        {"MASK", "lineEdit_mask", "255.255.255.128", "255.255.255.128"},
        {"GATEWAY", "lineEdit_gateway", "10.0.0.1", "10.0.0.1"},
        {"PORT TCP", "lineEdit_portTCP", "10502", "10502"},
        {"parity", "comboBox", universal ? "even" : "2", "#3"},
        {"SPEED RS485", "comboBox_speed", "57200", "#7"},
        {"STOP BIT", "comboBox_2", "2", "#2"},
        {"IP SERVER TCP", "lineEdit_ipservertcp", "10.0.0.1", "10.0.0.1"},
        {"TIMEOUT TCP", "lineEdit_timeout", "240", "240"},
    };
    if (kind == Kind::TcpRtu)
        list.resize(8);
    if (universal) {
        list.insert(8, {"timeout response", "lineEdit_timewait", "9999", "9999"});
        list.prepend({"version", "lineEdit_version", "1.2.3-beta", "1.2.3-beta"});
        list.prepend({"MODE TCP", "comboBox_mode", "client", "#2"});
        list.append({"rtu virtual id", "lineEdit_rtu_virtual_id", "247", "247"});
        list.append({"tcp slave id", "lineEdit_tcp_id", "255", "255"});
    }
    return list;
}

void addKindRows()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("TCP-RTU") << Kind::TcpRtu;
    QTest::newRow("RTU-TCP") << Kind::RtuTcp;
    QTest::newRow("universal") << Kind::Universal;
}

Kind fetchKind()
{
    QFETCH(Kind, kind);
    return kind;
}
