// The port: opening, closing, losing it and flooding it, and what begins and ends a sequence.

#include "window_driver.h"

#include <QApplication>
#include <QComboBox>
#include <QProcess>
#include <QSerialPortInfo>

#include <cstdlib>

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

/// Without what is freed and kept for later, which is for the allocator to say. That of sanitizers
/// counts nothing here.
static qint64 bytesInUse()
{
#pragma GCC diagnostic push // what takes its place is younger than our oldest C library
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    const struct mallinfo info = mallinfo();
#pragma GCC diagnostic pop
    return static_cast<qint64>(info.uordblks) + info.hblkhd;
}

class TestLink : public QObject {
    Q_OBJECT

private slots:
    void listsThePorts()
    {
        WindowDriver driver;
        driver.click("scanport");
        const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
        auto *list = driver.find<QComboBox>("serialPortInfoListBox");
        QCOMPARE(list->count(), ports.size());
        for (int i = 0; i < ports.size(); ++i)
            QCOMPARE(list->itemText(i), ports[i].portName());
    }

    void reportsOnlyFailuresToOpen()
    {
        WindowDriver driver(Kind::TcpRtu);
        QSerialPort other(driver.module.portPath());
        QVERIFY(other.open(QIODevice::ReadWrite));
        // A line that is hung up fails with the error code of a lost port.
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(grantpt(master) == 0 && unlockpt(master) == 0);
        const int line = open(ptsname(master), O_RDWR | O_NOCTTY);
        close(master);
        const QString hungUp = QString("/proc/self/fd/%1").arg(line);
        const QString labels = ", Сканировать, Записать параметры";
        for (const QString &port : {QString(), QString("/dev/no-such-port"), QString("/dev"),
                                    QString("/dev/null"), hungUp, driver.module.portPath()}) {
            driver.boxes.clear();
            driver.choosePort(port);
            driver.click("connect");
            QCOMPARE(driver.boxes, QStringList{box::portDenied});
            QCOMPARE(driver.window.size(), QSize(750, 450)); // as of the kind
            QCOMPARE(driver.state(), "Порт отказано в доступе, Cоединиться" + labels);
        }
        close(line);
        other.close();
        driver.click("connect");
        driver.boxes.clear();
        driver.click("applyButton"); // does nothing before the first read
        for (const auto error : {QSerialPort::NoError, QSerialPort::ReadError,
                                 QSerialPort::WriteError, QSerialPort::PermissionError}) {
            QVERIFY(QMetaObject::invokeMethod(&driver.window, "handleError",
                                              Q_ARG(QSerialPort::SerialPortError, error)));
        }
        QCOMPARE(driver.state(), "Connected, Отсоединиться" + labels);
        QVERIFY(driver.boxes.isEmpty());
    }

    void sequencesBeginAndEnd_data() { addRowsOf("ends.txt"); }
    void sequencesBeginAndEnd()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        const QString running = row[0];
        const QString end = row[1];
        WindowDriver driver(kind);
        QStringList boxes;
        for (QByteArray &box : row.mid(4))
            boxes.append(box.replace("<kind>", nameOf(kind).toUtf8()));
        driver.prepare();
        if (!running.isEmpty())
            runTwoSteps(driver, running, !end.startsWith("silence"));
        driver.markAll();
        const QString all = driver.marked().join(' ');

        driver.onBox = [&](QMessageBox *) {
            // The next tick is an hour away, but a loss comes through behind the box as well.
            if (end == "silence, loss" && driver.boxes.size() == 1) {
                driver.module.hangUp();
                QTRY_COMPARE(driver.boxes, boxes);
            }
            // Closed first: the library would report a dead port about a million times a second.
            if (driver.boxes.last() == box::portLost)
                QVERIFY(driver.state().startsWith("Disconnected"));
        };
        bringAbout(driver, end);
        QTRY_COMPARE(driver.boxes, boxes);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QTRY_COMPARE(driver.state(), QString(row[2]));
        QCOMPARE(driver.marked(green).join(' '), row[3] == "all" ? all : QString(row[3]));
        startAnew(driver);
    }

    void ticksGoOnBehindTheNoConnectionBox_data() { addKindRows(); }
    void ticksGoOnBehindTheNoConnectionBox()
    {
        QFETCH(Kind, kind);
        for (const bool writing : {false, true}) {
            WindowDriver driver(kind);
            driver.prepare();
            // What is acknowledged after the check does not count, neither now nor later.
            connect(&driver.module, &simulator::SimulatedModule::commandReceived, &driver, [&] {
                if (writing && driver.commands.size() > 2)
                    driver.module.send(acknowledgementOf(kind));
            });
            driver.onBox = [&](QMessageBox *) { QTRY_VERIFY(!driver.activeTimer()); };
            driver.click(writing ? "applyButton" : "scan_parameters");
            driver.setTick(50);
            QTRY_VERIFY(driver.state().startsWith(state::disconnected));
            // The query of the step that raised the box is left out.
            QByteArrayList queries = driver.module.queries().toList();
            queries.removeAt(1);
            QTRY_COMPARE(driver.commands, writing ? writeCommandsOf(kind) : queries);
            QStringList boxes{box::noConnection.arg(nameOf(kind))};
            if (writing)
                boxes.append(box::success.arg(nameOf(kind)));
            QCOMPARE(driver.boxes, boxes);
            if (!writing)
                continue;
            driver.boxes.clear();
            driver.onBox = [](QMessageBox *) {};
            QTRY_VERIFY(QFile::exists(driver.module.portPath()));
            driver.click("connect");
            driver.start("applyButton");
            for (int i = 0; i < 4; ++i)
                driver.tick();
            QTRY_COMPARE(driver.boxes, QStringList{box::noConnection.arg(nameOf(kind))});
        }
    }

    void windowOutlivesAFlood()
    {
        if (QByteArray(MODULE_SIMULATOR).isEmpty())
            QSKIP("an emulated program cannot start another one");
        // From a process of its own, for the window has to be kept busy while it is used.
        QProcess simulator;
        simulator.start(MODULE_SIMULATOR, {"--kind", "tcp-rtu", "--flood", "60000"});
        QVERIFY(simulator.waitForReadyRead());
        WindowDriver driver(Kind::TcpRtu);
        driver.choosePort(simulator.readLine().trimmed());
        driver.click("connect");
        driver.start("scan_parameters");
        driver.tick();

        QTRY_COMPARE(driver.mark("lineEdit_MAC"), green); // with what the flood brings

        const qint64 before = bytesInUse();
        for (int clicks = 0; clicks < 100; ++clicks) { // none waits for the flood to end
            QTest::qWait(20);
            driver.click("scan_parameters");
        }
        QVERIFY(bytesInUse() - before < 1 << 20);

        simulator.terminate();
        QVERIFY(simulator.waitForFinished());
        QTRY_COMPARE(driver.text("connect"), QString("Cоединиться"));
        QTRY_VERIFY(!QApplication::activeModalWidget());
        driver.module.faults.silent = true;
        driver.choosePort(driver.module.portPath());
        startAnew(driver);
    }

private:
    /// Up to the step that looks for an answer, if there was none; a write has its second command
    /// out.
    static void runTwoSteps(WindowDriver &driver, const QString &button, bool answered)
    {
        driver.start(button);
        QVERIFY(driver.tickCommand());
        QVERIFY(!answered || driver.deliver(acknowledgementOf(driver.module.kind())));
        if (button == "applyButton") {
            driver.tick();
            QVERIFY(driver.tickCommand());
        }
    }

    static void bringAbout(WindowDriver &driver, const QString &end)
    {
        if (end == "expected loss")
            driver.click("Reset");
        if (end.endsWith("loss") && !end.startsWith("silence"))
            driver.module.hangUp();
        else if (end == "refusal")
            QVERIFY(driver.deliver("?"));
        else if (end.startsWith("silence"))
            driver.tick(); // returns when the box is closed
        else if (end != "last tick")
            driver.click(end);
        while (end == "last tick" && driver.activeTimer())
            driver.tick();
        // Sent at once, the commands arrive as one that makes no sense, which has to be over.
        if (driver.boxes == QStringList{box::success.arg(nameOf(driver.module.kind()))})
            QTRY_VERIFY(driver.commands.last().toLower().endsWith("reset"));
    }

    /// Whatever has ended, both sequences can be started, and start with their first command.
    static void startAnew(WindowDriver &driver)
    {
        driver.module.comeBack();
        if (driver.text("connect") == "Cоединиться")
            driver.click("connect");
        if (driver.text("scan_parameters") == "Стоп сканирования")
            driver.click("scan_parameters");
        if (driver.text("applyButton") == "Остановить запись")
            driver.click("applyButton");
        driver.commands.clear();
        for (const char *button : {"applyButton", "scan_parameters"}) {
            driver.start(button);
            QVERIFY(driver.tickCommand());
            driver.click(button);
        }
        // Commands that nobody had read yet stand before it.
        const Kind kind = driver.module.kind();
        const QByteArray firstWrite = kind == Kind::Universal ? "CHANGE MODE TCP:" : "CHANGE IP:";
        QVERIFY(driver.commands.first().contains(firstWrite));
        QCOMPARE(driver.commands.last(), driver.module.queries().first());
    }
};

QTEST_MAIN(TestLink)
#include "test_link.moc"
