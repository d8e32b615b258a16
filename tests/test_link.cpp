// The port: opening, closing, losing it and flooding it, and what ends a sequence early.

#include "window_driver.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QProcess>
#include <QSerialPortInfo>

#include <cstdlib>
#include <ctime>

#include <fcntl.h>
#include <unistd.h>

class TestLink : public QObject {
    Q_OBJECT

private slots:
    void reportsOnlyFailuresToOpen()
    {
        WindowDriver driver(Kind::RtuTcp);
        driver.click("scanport");
        QCOMPARE(driver.find<QComboBox>("serialPortInfoListBox")->count(),
                 QSerialPortInfo::availablePorts().size());
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
            driver.connectPort();
            QCOMPARE(driver.boxes, QStringList{box::portDenied});
            QCOMPARE(driver.state(), "Порт отказано в доступе, Cоединиться" + labels);
            QCOMPARE(driver.window.size(), QSize(750, 450));
        }
        close(line);
        other.close();
        driver.connectPort();
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

    void startsAnewAfterEveryEnd_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QByteArrayList>("row");
        for (const Kind kind : allKinds) {
            for (const QByteArrayList &row : tableOf("ends.txt"))
                QTest::newRow(nameOf(kind).toUtf8() + ' ' + row[0] + ' ' + row[1]) << kind << row;
        }
    }

    void startsAnewAfterEveryEnd()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        const QString running = row[0];
        const QString end = row[1];
        QStringList boxes;
        for (QByteArray &box : row.mid(3))
            boxes.append(box.replace("<kind>", nameOf(kind).toUtf8()));
        const bool silent = end.startsWith("silence");
        WindowDriver driver(kind);
        driver.prepare();
        if (!running.isEmpty()) {
            driver.start(running);
            QVERIFY(driver.tickCommand());
            QVERIFY(silent || driver.deliver(acknowledgementOf(kind)));
        }
        if (running == "applyButton") {
            driver.tick();
            QVERIFY(driver.tickCommand());
        }

        driver.handleBox = [&](QMessageBox *box) {
            // The next tick is an hour away, but a loss comes through behind the box as well.
            if (end == "silence, loss" && driver.boxes.size() == 1) {
                driver.module.hangUp();
                QTRY_COMPARE(driver.boxes, boxes);
            }
            // The library would report a dead port without end.
            const std::clock_t before = std::clock();
            QTest::qWait(100);
            QVERIFY(std::clock() - before < CLOCKS_PER_SEC * 75 / 1000);
            box->accept();
        };
        if (end == "loss")
            driver.module.hangUp();
        else if (end == "refusal")
            QVERIFY(driver.deliver("?"));
        else if (silent)
            driver.tick(); // returns when the box is closed
        else
            driver.click(end);
        QTRY_COMPARE(driver.boxes, boxes);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(driver.state(), QString(row[2]));

        driver.module.comeBack();
        if (driver.text("connect") == "Cоединиться") {
            QVERIFY(QMetaObject::invokeMethod(&driver.window, "on_applyButton_clicked"));
            QVERIFY(!driver.activeTimer());
            driver.connectPort();
        }
        if (driver.text("scan_parameters") == "Стоп сканирования")
            driver.click("scan_parameters");
        driver.commands.clear();
        for (const char *button : {"applyButton", "scan_parameters"}) {
            driver.start(button);
            QVERIFY(driver.tickCommand());
            driver.click(button);
        }
        const char *firstWrite = kind == Kind::Universal ? "CHANGE MODE TCP:" : "CHANGE IP:";
        QVERIFY(driver.commands.first().startsWith(firstWrite));
        QCOMPARE(driver.commands.last(), driver.module.queries().first());
    }

    void ticksGoOnBehindTheNoConnectionBox_data() { addKindRows(); }
    void ticksGoOnBehindTheNoConnectionBox()
    {
        QFETCH(Kind, kind);
        for (const bool writing : {false, true}) {
            WindowDriver driver(kind);
            driver.prepare();
            driver.handleBox = [&](QMessageBox *box) {
                QTRY_VERIFY(!driver.activeTimer());
                box->accept();
            };
            driver.click(writing ? "applyButton" : "scan_parameters");
            driver.activeTimer()->setInterval(10);
            QTRY_VERIFY(driver.state().startsWith(state::disconnected));
            // The query of the step that raised the box is left out.
            QByteArrayList queries = driver.module.queries().toList();
            queries.removeAt(1);
            QTRY_COMPARE(driver.commands, writing ? writeCommandsOf(kind) : queries);
            QStringList boxes{box::noConnection.arg(nameOf(kind))};
            if (writing)
                boxes.append(box::success.arg(nameOf(kind)));
            QCOMPARE(driver.boxes, boxes);
        }
    }

    void windowOutlivesAFlood()
    {
        if (QByteArray(MODULE_SIMULATOR).isEmpty())
            QSKIP("an emulated program cannot start another one");
        // From a process of its own, for the window has to be kept busy while it is used.
        constexpr int floodMs = 3000;
        QProcess simulator;
        simulator.start(MODULE_SIMULATOR,
                        {"--kind", "tcp-rtu", "--flood", QString::number(floodMs)});
        QVERIFY(simulator.waitForReadyRead());
        WindowDriver driver(Kind::TcpRtu);
        driver.choosePort(simulator.readLine().trimmed());
        driver.connectPort();
        driver.start("scan_parameters");
        driver.tick();

        const auto memoryPages = [] { return contentOf("/proc/self/statm").split(' ')[1].toInt(); };
        const int pagesBefore = memoryPages();
        int deliveries = 0;
        int clicks = 0;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < floodMs + 500) {
            QTest::qWait(20);
            driver.click("scan_parameters");
            ++clicks;
            deliveries += driver.deliveriesTraced() / 2;
            driver.debugLines.clear();
        }
        qInfo("%d deliveries, %d clicks", deliveries, clicks);
        QVERIFY(deliveries > 0);
        QVERIFY(clicks > 2); // none of them waits for the flood to end
        QVERIFY(memoryPages() - pagesBefore < 5000);

        simulator.kill();
        QVERIFY(simulator.waitForFinished());
        QTRY_COMPARE(driver.text("connect"), QString("Cоединиться"));
        QTRY_VERIFY(!QApplication::activeModalWidget());
        driver.choosePort(driver.module.portPath());
        driver.connectPort();
        if (driver.text("scan_parameters") == "Стоп сканирования")
            driver.click("scan_parameters");
        driver.start("scan_parameters");
        QVERIFY(driver.tickCommand() && driver.deliver("MAC 01-02"));
        QCOMPARE(driver.text("lineEdit_MAC"), QString("01-02"));
    }
};

QTEST_MAIN(TestLink)
#include "test_link.moc"
