// Opening, closing, losing and flooding the port; how sequences begin and end.

#include "window_fixture.h"

#include <QComboBox>
#include <QLoggingCategory>
#include <QMenu>
#include <QProcess>
#include <QSerialPortInfo>

#include <cstdlib>

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <termios.h>
#include <unistd.h>

/// Without memory that is freed but cached. Always 0 under sanitizers.
static qint64 bytesInUse()
{
#pragma GCC diagnostic push // mallinfo2() is newer than our oldest C library
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const struct mallinfo info = mallinfo();
#pragma GCC diagnostic pop
    return static_cast<qint64>(info.uordblks) + info.hblkhd;
}

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
extern "C" int tcsetattr(int descriptor, int actions, const termios *settings) noexcept
{
    lineSettings.append(*settings);
    static void *const original = dlsym(RTLD_NEXT, "tcsetattr");
    return reinterpret_cast<decltype(&tcsetattr)>(original)(descriptor, actions, settings);
}

class TestPort : public QObject {
    Q_OBJECT

private slots:
    void listsThePorts()
    {
        UiDriver user;
        const auto *list = user.find<QComboBox>("serialPortInfoListBox");
        for (const int count : {2, 3, 0}) {
            if (count != 2) { // those of the start
                portCount = count;
                user.click("scanport");
            }
            QCOMPARE(list->count(), count);
            QCOMPARE(list->currentText(), QString(count > 0 ? "ttyS0" : ""));
        }
    }

    void reportsPortsThatDoNotOpen()
    {
        WindowFixture user(Kind::TcpRtu);
        QSerialPort other(user.module.portPath());
        QVERIFY(other.open(QIODevice::ReadWrite));
        // Opening a hung-up line fails with the error code of a lost port.
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(grantpt(master) == 0 && unlockpt(master) == 0);
        const int line = open(ptsname(master), O_RDWR | O_NOCTTY);
        close(master);
        user.onBox = [&](QMessageBox *) { QCOMPARE(user.text("statusbar"), QString()); };
        for (const QString &port :
             {QString(), QString("/dev/no-such-port"), QString("/dev"), QString("/dev/null"),
              QString("/proc/self/fd/%1").arg(line), user.module.portPath()}) {
            user.choosePort(port);
            user.click("connect");
            COMPARE(user.boxes, QStringList{user.known("port denied")});
            QCOMPARE(user.window.size(), QSize(750, 450)); // the view of the kind is applied
            COMPARE(user.state(),
                    "Порт отказано в доступе, Cоединиться, Сканировать, Записать параметры");
            user.boxes.clear();
            user.onBox = {};
        }
        close(line);
    }

    void opensAPort()
    {
        WindowFixture user(Kind::TcpRtu);
        user.click("connect");
        // 9600 8N1 without flow control
        QCOMPARE(cfgetispeed(&lineSettings.last()), speed_t(B9600));
        QCOMPARE(cfgetospeed(&lineSettings.last()), speed_t(B9600));
        for (const termios &settings : lineSettings) {
            QCOMPARE(settings.c_cflag & (CSIZE | CSTOPB | PARENB | CRTSCTS), tcflag_t(CS8));
            QCOMPARE(settings.c_iflag & (IXON | IXOFF), tcflag_t(0));
        }
        auto *menu = user.find<QMenu>("menu"); // its empty status tips are ignored
        menu->popup({});
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Escape);
        user.click("applyButton"); // has no effect before the first read
        for (const auto error : {QSerialPort::NoError, QSerialPort::ReadError,
                                 QSerialPort::WriteError, QSerialPort::PermissionError}) {
            QVERIFY(QMetaObject::invokeMethod(&user.window, "handleError",
                                              Q_ARG(QSerialPort::SerialPortError, error)));
        }
        COMPARE(user.state(), "Connected, Отсоединиться, Сканировать, Записать параметры");
        COMPARE(user.boxes, QStringList());
    }

    void printsDebugOutput_data() { addRowsOf("debug_output.txt"); }
    void printsDebugOutput()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        WindowFixture user(kind);
        user.connectAndFillForm();
        static QByteArrayList lines;
        lines.clear();
        QLoggingCategory::setFilterRules("default.warning=false");
        const auto handler =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &line) {
                lines.append(line.toUtf8());
            });
        perform(user, row[0]);
        qInstallMessageHandler(handler);
        COMPARE(lines, row.mid(1));
    }

    void sequencesBeginAndEnd_data() { addRowsOf("sequence_ends.txt"); }
    void sequencesBeginAndEnd()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        const QByteArrayList further = row[1].split(',');
        WindowFixture user(kind);
        QStringList boxes;
        for (const QByteArray &box : row.mid(4))
            boxes.append(box);
        user.connectAndFillForm();
        perform(user, row[0]);
        user.markAll();
        user.commands.clear();

        int openedBoxes = 0;
        user.onBox = [&](QMessageBox *) {
            if (++openedBoxes == 1)
                perform(user, further.value(1));
            // Already closed, because Qt SerialPort would report a hung-up port continuously.
            if (user.boxes.last() == user.known("port lost"))
                QVERIFY(user.state().startsWith("Disconnected"));
        };
        perform(user, further[0]);
        QTRY_VERIFY(further.size() < 3 || (openedBoxes > 0 && !QApplication::activeModalWidget()));
        perform(user, further.value(2));
        TRY_COMPARE(user.boxes, boxes);
        // Ticks in a row merge all commands into one invalid command; wait until it is received.
        if (boxes.contains(user.known("success")) && row[2].startsWith("Connected"))
            QTRY_VERIFY(user.commands.join().toLower().endsWith("reset"));
        QTRY_VERIFY(!QApplication::activeModalWidget());
        TRY_COMPARE(user.state(), QString(row[2]));
        COMPARE(user.marked("green").join(' '), QString(row[3]));
        startAnew(user);
    }

    void staysResponsiveDuringAFlood()
    {
        if (QByteArray(MODULE_SIMULATOR).isEmpty())
            QSKIP("an emulated program cannot start another one");
        // In a process of its own, so that the flood does not pause while the window is busy.
        QProcess simulator;
        simulator.start(MODULE_SIMULATOR, {"--kind", "tcp-rtu", "--flood", "60000"});
        QVERIFY(simulator.waitForReadyRead());
        WindowFixture user(Kind::TcpRtu);
        user.choosePort(simulator.readLine().trimmed());
        user.click("connect");
        user.start("scan_parameters");
        user.tick();

        QTRY_COMPARE(user.markOf("lineEdit_MAC"), QString("green")); // the flood contains a value

        const qint64 before = bytesInUse();
        for (int clicks = 0; clicks < 100; ++clicks) { // each click is handled during the flood
            QTest::qWait(20);
            user.click("scan_parameters");
        }
        QVERIFY(bytesInUse() - before < 1 << 20);

        user.click("connect");
        simulator.terminate();
        QVERIFY(simulator.waitForFinished());
    }

private:
    /// Performs actions of debug_output.txt.
    static void perform(WindowFixture &user, const QByteArray &actions)
    {
        const bool universal = user.module.kind() == Kind::Universal;
        for (const QByteArray &action : actions.isEmpty() ? QByteArrayList() : actions.split(' ')) {
            if (action.startsWith("data:"))
                QVERIFY(user.deliver(action.mid(5)));
            else if (action == "ok")
                QVERIFY(user.deliver(acknowledgementOf(user.module.kind())));
            else if (action.startsWith("answer:"))
                user.boxAnswer = action.mid(7);
            else if (action.startsWith("sent:"))
                TRY_COMPARE(user.commands, action.mid(5).replace('_', ' ').split(','));
            else if (action == "loss")
                user.module.hangUp();
            else if (action == "boxes")
                QTRY_VERIFY(user.boxes.size() > 1);
            else if (action == "run")
                user.setTick(50);
            else if (action == "end")
                QTRY_VERIFY(!user.activeTimer());
            else if (action == "send")
                QVERIFY(user.tickAndAwaitCommand());
            else if (action.startsWith("tick"))
                user.tick(action == "tick" ? 1 : 100);
            else if (action.startsWith("action"))
                user.trigger(
                    action, universal ? TEST_DATA "defaults.TRset" : TEST_DATA "nondefaults.TRset");
            else if (user.window.findChild<QWidget *>(action))
                user.click(action);
            else
                QVERIFY(QMetaObject::invokeMethod(&user.window, action));
            if (action != "run" && action != "end")
                user.setTick(oneHourMs);
        }
    }

    /// Whatever happened before, both sequences can be started again and begin with their first
    /// command.
    static void startAnew(WindowFixture &user)
    {
        if (user.text("connect") == "Cоединиться") {
            user.module.hangUp(); // it may be about to restart
            user.module.reconnect();
            user.click("connect");
        }
        if (user.text("scan_parameters") == "Стоп сканирования")
            user.click("scan_parameters");
        if (user.text("applyButton") == "Остановить запись")
            user.click("applyButton");
        const Kind kind = user.module.kind();
        user.enter("conbox0", user.find<QComboBox>("conbox0")->itemText(static_cast<int>(kind)));
        user.commands.clear();
        for (const char *button : {"applyButton", "scan_parameters"}) {
            user.start(button);
            QVERIFY(user.tickAndAwaitCommand());
            user.click(button);
        }
        // Unread commands may precede it.
        QVERIFY(user.commands.first().contains(parametersOf(kind, false)[0].command.split(':')[0]));
        QCOMPARE(user.commands.last(), user.module.queries().first());
    }
};

WINDOW_TEST_MAIN(TestPort)
#include "test_port.moc"
