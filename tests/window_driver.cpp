#include "window_driver.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QThread>

#include <poll.h>

QString nameOf(Kind kind)
{
    const char *names[] = {"Modbus TCP-RTU", "Modbus RTU-TCP", "Modbus universal"};
    return names[static_cast<int>(kind)];
}

void addKindRows()
{
    QTest::addColumn<Kind>("kind");
    for (const Kind kind : allKinds)
        QTest::newRow(qPrintable(nameOf(kind))) << kind;
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

QList<QByteArrayList> tableOf(const QString &file)
{
    QList<QByteArrayList> rows;
    for (const QByteArray &line : contentOf(TEST_DATA + file).split('\n')) {
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        rows.append(QByteArrayList());
        for (const QByteArray &cell : line.split('|'))
            rows.last().append(QByteArray::fromPercentEncoding(cell));
    }
    return rows;
}

QVector<ParameterCase> parametersOf(Kind kind)
{
    static const QList<QByteArrayList> table = tableOf("parameters.txt");
    QVector<ParameterCase> parameters;
    for (const QByteArrayList &row : table) {
        if (row[0].contains(QByteArray::number(static_cast<int>(kind))))
            parameters.append({row[1], row[2], row[3], row[4], row[5]});
    }
    return parameters;
}

QVector<ParameterCase> writesOf(Kind kind)
{
    QVector<ParameterCase> writes;
    for (const ParameterCase &parameter : parametersOf(kind)) {
        if (!parameter.command.isEmpty())
            writes.append(parameter);
    }
    return writes;
}

QByteArrayList writeCommandsOf(Kind kind)
{
    QByteArrayList commands;
    for (const ParameterCase &write : writesOf(kind))
        commands.append(write.command);
    return commands << (kind == Kind::Universal ? "reset" : "RESET");
}

QByteArray acknowledgementOf(Kind kind)
{
    return kind == Kind::Universal ? "ok" : "OK";
}

static WindowDriver *driver = nullptr;
static constexpr int anHour = 3600 * 1000;

static void keepDebugLine(QtMsgType type, const QMessageLogContext &, const QString &line)
{
    if (type == QtDebugMsg && driver)
        driver->debugLines.append(line);
    else if (type != QtWarningMsg) // the library warns of what the window ignores on purpose
        fprintf(stderr, "%s\n", qPrintable(line));
}

WindowDriver::WindowDriver(Kind kind)
    : module(kind)
    , timers(window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly))
{
    driver = this;
    qInstallMessageHandler(keepDebugLine);
    module.faults.delayMs = 1;
    connect(&module, &simulator::SimulatedModule::commandReceived, this,
            [this](const QByteArray &command) { commands.append(command); });
    if (!module.start())
        qFatal("%s", qPrintable(module.errorString()));
    choosePort(module.portPath());
    find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(kind));
    window.show();
    lookForDialogs();
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

void WindowDriver::prepare()
{
    module.faults.silent = true;
    connectPort();
    click("scan_parameters"); // a read, stopped at once
    click("scan_parameters");
    for (const ParameterCase &parameter : parametersOf(module.kind()))
        enter(parameter.widget, parameter.inForm);
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

QString WindowDriver::state()
{
    QStringList state{window.statusBar()->currentMessage(), text("connect"),
                      text("scan_parameters"), text("applyButton")};
    if (QTimer *timer = activeTimer())
        state.append(timers.indexOf(timer) % 2 == 0 ? "read" : "write");
    bool marked = false;
    for (const ParameterCase &parameter : parametersOf(Kind::Universal))
        marked = marked || !mark(parameter.widget).isEmpty();
    if (marked)
        state.append("marks");
    const bool linked = text("connect") == "Отсоединиться";
    for (const char *name : {"scan_parameters", "applyButton", "Reset", "reset_allparameters"}) {
        if (isEnabled(name) != linked)
            state.append(name);
    }
    for (const char *name : {"conbox0", "serialPortInfoListBox", "scanport"}) {
        if (isEnabled(name) == linked)
            state.append(name);
    }
    return state.join(", ");
}

QTimer *WindowDriver::activeTimer()
{
    for (QTimer *timer : timers) {
        if (timer->isActive())
            return timer;
    }
    return nullptr;
}

void WindowDriver::start(const QString &button)
{
    click(button);
    QVERIFY(activeTimer());
    activeTimer()->setInterval(anHour);
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

bool WindowDriver::deliver(const QByteArray &bytes)
{
    const int before = deliveriesTraced();
    module.send(bytes);
    return QTest::qWaitFor([&] { return deliveriesTraced() > before; });
}

bool WindowDriver::deliverWithTick(const QByteArray &bytes)
{
    QTimer *timer = activeTimer();
    const int before = deliveriesTraced();
    timer->setInterval(1);
    module.send(bytes);
    waitForArrival();
    QThread::msleep(10);
    QCoreApplication::processEvents();
    if (timer->isActive())
        timer->setInterval(anHour);
    return QTest::qWaitFor([&] { return deliveriesTraced() > before; });
}

/// Until what the module has sent can be read from the line, without an event loop.
void WindowDriver::waitForArrival()
{
    const QString pty = QFileInfo(module.portPath()).symLinkTarget();
    for (const QFileInfo &file : QDir("/proc/self/fd").entryInfoList(QDir::System)) {
        pollfd line{file.fileName().toInt(), POLLIN, 0};
        if (file.symLinkTarget() == pty && poll(&line, 1, 5000) != 1)
            qFatal("nothing arrives");
    }
}

bool WindowDriver::writeRows(int count)
{
    for (int row = 0; row < count; ++row) {
        if (!tickCommand() || !deliver(acknowledgementOf(module.kind())))
            return false;
        tick();
    }
    return true;
}

void WindowDriver::lookForDialogs()
{
    // First, for a handler may wait, and other boxes open meanwhile.
    QTimer::singleShot(2, this, &WindowDriver::lookForDialogs);
    QWidget *top = QApplication::activeModalWidget();
    if (!top || top->property("known").toBool())
        return;
    top->setProperty("known", true);
    auto *box = qobject_cast<QMessageBox *>(top);
    if (box)
        boxes.append(box->windowTitle() + ": " + box->text());
    if (!box)
        handleDialog(qobject_cast<QFileDialog *>(top));
    else if (handleBox)
        handleBox(box);
    else if (QAbstractButton *yes = box->button(QMessageBox::Yes))
        yes->click();
    else
        box->accept();
}

void WindowDriver::answer(QDialog *fileDialog, const QString &path)
{
    fileDialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
    if (path.isEmpty())
        fileDialog->reject();
    else
        fileDialog->accept();
}
