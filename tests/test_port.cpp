// Opening, closing, losing and flooding the port; how sequences begin and end.

#include "window_fixture.h"

#include <QComboBox>
#include <QLoggingCategory>
#include <QMenu>
#include <QProcess>
#include <QSerialPortInfo>

#include <dlfcn.h>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

// Stand-ins for functions of the libraries.

/// Because a machine may have no serial port.
static int portCount = 2;
QList<QSerialPortInfo> QSerialPortInfo::availablePorts()
{
    QList<QSerialPortInfo> ports;
    for (int i = 0; i < portCount; ++i)
        ports.append(QSerialPortInfo());
    return ports;
}
QString QSerialPortInfo::portName() const
{
    return "ttyS0";
}

/// Because a pty does not keep the parity.
static QVector<termios> lineSettings;
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name, *-reinterpret-cast)
extern "C" int tcsetattr(int descriptor, int actions, const termios *settings) noexcept
{
    lineSettings.append(*settings);
    static void *const original = dlsym(RTLD_NEXT, "tcsetattr");
    return reinterpret_cast<decltype(&tcsetattr)>(original)(descriptor, actions, settings);
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name, *-reinterpret-cast)

class TestPort : public QObject {
    Q_OBJECT

private slots:
    void listsThePorts()
    {
        UiDriver driver;
        const auto *list = driver.find<QComboBox>("serialPortInfoListBox");
        for (const int count : {2, 3, 0}) {
            if (count != 2) { // those of the start
                portCount = count;
                driver.click("scanport");
            }
            QCOMPARE(list->count(), count);
            QCOMPARE(list->currentText(), QString(count > 0 ? "ttyS0" : ""));
        }
    }

    void reportsPortsThatDoNotOpen()
    {
        WindowFixture fixture(Kind::TcpRtu);
        QSerialPort other(fixture.module.portPath());
        QVERIFY(other.open(QIODevice::ReadWrite));
        // Opening a hung-up line fails with the error code of a lost port.
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(grantpt(master) == 0 && unlockpt(master) == 0);
        const int line = open(ptsname(master), O_RDWR | O_NOCTTY);
        close(master);
        fixture.onBox = [&](QMessageBox *) { QCOMPARE(fixture.text("statusbar"), QString()); };
        for (const QString &port :
             {QString(), QString("/dev/no-such-port"), QString("/dev"), QString("/dev/null"),
              QString("/proc/self/fd/%1").arg(line), fixture.module.portPath()}) {
            fixture.choosePort(port);
            fixture.click("connect");
            COMPARE(fixture.boxes, QStringList{fixture.known("port denied")});
            QCOMPARE(fixture.window.size(), QSize(750, 450)); // the view of the kind is applied
            COMPARE(fixture.state(),
                    "Порт отказано в доступе, Cоединиться, Сканировать, Записать параметры");
            fixture.boxes.clear();
            fixture.onBox = {};
        }
        close(line);
    }

    void opensAPort()
    {
        WindowFixture fixture(Kind::TcpRtu);
        fixture.click("connect");
        // 9600 8N1 without flow control
        QCOMPARE(cfgetispeed(&lineSettings.last()), speed_t(B9600));
        QCOMPARE(cfgetospeed(&lineSettings.last()), speed_t(B9600));
        for (const termios &settings : lineSettings) {
            QCOMPARE(settings.c_cflag & (CSIZE | CSTOPB | PARENB | CRTSCTS), tcflag_t(CS8));
            QCOMPARE(settings.c_iflag & (IXON | IXOFF), tcflag_t(0));
        }
        auto *menu = fixture.find<QMenu>("menu"); // its empty status tips are ignored
        menu->popup({});
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Escape);
        fixture.click("applyButton"); // has no effect before the first read
        for (const auto error : {QSerialPort::NoError, QSerialPort::ReadError,
                                 QSerialPort::WriteError, QSerialPort::PermissionError}) {
            QVERIFY(QMetaObject::invokeMethod(&fixture.window, "handleError",
                                              Q_ARG(QSerialPort::SerialPortError, error)));
        }
        COMPARE(fixture.state(), "Connected, Отсоединиться, Сканировать, Записать параметры");
        COMPARE(fixture.boxes, QStringList());
    }

    void printsDebugOutput_data() { addRowsOf("debug_output.txt"); }
    void printsDebugOutput()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        WindowFixture fixture(kind);
        fixture.connectAndFillForm();
        static QByteArrayList lines;
        lines.clear();
        QLoggingCategory::setFilterRules("default.warning=false");
        const auto handler =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &line) {
                lines.append(line.toUtf8());
            });
        perform(fixture, row[0]);
        qInstallMessageHandler(handler);
        COMPARE(lines, row.mid(1));
    }

    void sequencesBeginAndEnd_data() { addRowsOf("sequence_ends.txt"); }
    void sequencesBeginAndEnd()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        const QByteArrayList further = row[1].split(',');
        WindowFixture fixture(kind);
        QStringList boxes;
        for (const QByteArray &box : row.mid(4))
            boxes.append(box);
        fixture.connectAndFillForm();
        perform(fixture, row[0]);
        fixture.markAll();
        fixture.commands.clear();

        int openedBoxes = 0;
        fixture.onBox = [&](QMessageBox *) {
            // The port is closed by now: Qt SerialPort would report its hang-up continuously.
            if (fixture.boxes.last() == fixture.known("port lost"))
                QVERIFY(fixture.state().startsWith("Disconnected, Отсоединиться"));
            if (++openedBoxes == 1)
                perform(fixture, further.value(1));
        };
        perform(fixture, further[0]);
        QTRY_VERIFY(further.size() < 3 || (openedBoxes > 0 && !QApplication::activeModalWidget()));
        perform(fixture, further.value(2));
        TRY_COMPARE(fixture.boxes, boxes);
        // Ticks in a row merge all commands into one invalid command; wait until it is received.
        if (boxes.contains(fixture.known("success")) && row[2].startsWith("Connected"))
            QTRY_VERIFY(fixture.commands.join().toLower().endsWith("reset"));
        QTRY_VERIFY(!QApplication::activeModalWidget());
        TRY_COMPARE(fixture.state(), QString(row[2]));
        COMPARE(fixture.marked("green").join(' '), QString(row[3]));
        startAnew(fixture);
    }

    void staysResponsiveDuringAFlood()
    {
        if (QByteArray(MODULE_SIMULATOR).isEmpty())
            QSKIP("an emulated program cannot start another one");
        // In a process of its own, so that the flood does not pause while the window is busy.
        QProcess simulator;
        simulator.start(MODULE_SIMULATOR, {"--kind", "tcp-rtu", "--flood", "60000"});
        QVERIFY(simulator.waitForReadyRead());
        WindowFixture fixture(Kind::TcpRtu);
        fixture.choosePort(simulator.readLine().trimmed());
        fixture.click("connect");
        fixture.start("scan_parameters");
        fixture.tick();

        // The flood contains a value.
        QTRY_COMPARE(fixture.markOf("lineEdit_MAC"), QString("green"));
        for (int clicks = 0; clicks < 100; ++clicks) { // each click is handled during the flood
            QTest::qWait(20);
            fixture.click("scan_parameters");
        }
        fixture.click("connect");
        simulator.terminate();
        QVERIFY(simulator.waitForFinished());
    }

private:
    /// Performs actions of debug_output.txt.
    static void perform(WindowFixture &fixture, const QByteArray &actions)
    {
        const bool universal = fixture.module.kind() == Kind::Universal;
        for (const QByteArray &action : actions.isEmpty() ? QByteArrayList() : actions.split(' ')) {
            if (action.startsWith("data:"))
                QVERIFY(fixture.deliver(action.mid(5)));
            else if (action == "ok")
                QVERIFY(fixture.deliver(acknowledgementOf(fixture.module.kind())));
            else if (action.startsWith("answer:"))
                fixture.boxAnswer = action.mid(7);
            else if (action.startsWith("sent:"))
                TRY_COMPARE(fixture.commands, action.mid(5).replace('_', ' ').split(','));
            else if (action == "loss")
                fixture.module.hangUp();
            else if (action == "boxes")
                QTRY_VERIFY(fixture.boxes.size() > 1);
            else if (action == "run")
                fixture.setTick(50);
            else if (action == "end")
                QTRY_VERIFY(!fixture.activeTimer());
            else if (action == "send")
                QVERIFY(fixture.tickAndAwaitCommand());
            else if (action.startsWith("tick"))
                fixture.tick(action == "tick" ? 1 : 100);
            else if (action.startsWith("action"))
                fixture.trigger(
                    action, universal ? TEST_DATA "defaults.TRset" : TEST_DATA "nondefaults.TRset");
            else if (fixture.window.findChild<QWidget *>(action))
                fixture.click(action);
            else
                QVERIFY(QMetaObject::invokeMethod(&fixture.window, action));
            if (action != "run" && action != "end")
                fixture.setTick(oneHourMs);
        }
    }

    /// Whatever happened before, both sequences can be started again and begin with their first
    /// command.
    static void startAnew(WindowFixture &fixture)
    {
        if (fixture.text("connect") == "Cоединиться") {
            fixture.module.hangUp(); // it may be about to restart
            fixture.module.reconnect();
            fixture.choosePort(fixture.module.portPath()); // a refreshed list lacks it
            fixture.click("connect");
        }
        if (fixture.text("scan_parameters") == "Стоп сканирования")
            fixture.click("scan_parameters");
        if (fixture.text("applyButton") == "Остановить запись")
            fixture.click("applyButton");
        const Kind kind = fixture.module.kind();
        fixture.enter("conbox0",
                      fixture.find<QComboBox>("conbox0")->itemText(static_cast<int>(kind)));
        fixture.commands.clear();
        for (const char *button : {"applyButton", "scan_parameters"}) {
            fixture.start(button);
            QVERIFY(fixture.tickAndAwaitCommand());
            fixture.click(button);
        }
        // Unread commands may precede it.
        QVERIFY(
            fixture.commands.first().contains(parametersOf(kind, false)[0].command.split(':')[0]));
        QCOMPARE(fixture.commands.last(), fixture.module.queries().first());
    }
};

WINDOW_TEST_MAIN(TestPort)
#include "test_port.moc"
