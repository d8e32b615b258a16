// The port: opening, closing, and every way of losing it.

#include "window_driver.h"

#include <QComboBox>
#include <QSerialPortInfo>

#include <cstdlib>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

class TestLink : public QObject {
    Q_OBJECT

private slots:
    void controlsFollowTheLink();
    void refreshListsTheSystemsPorts();
    void failedOpenIsReportedOnce_data();
    void failedOpenIsReportedOnce();
    void portInUseIsNotOpened();
    void otherErrorsAreIgnored();
    void lossIsReportedOnce_data();
    void lossIsReportedOnce();
    void lossAfterRestartIsQuiet();
    void moduleIsFoundAgainAfterALoss();
};

static bool isLinked(WindowDriver &driver, bool linked)
{
    for (const char *name : {"scan_parameters", "applyButton", "Reset", "reset_allparameters"}) {
        if (driver.isEnabled(name) != linked)
            return false;
    }
    for (const char *name : {"conbox0", "serialPortInfoListBox", "scanport"}) {
        if (driver.isEnabled(name) == linked)
            return false;
    }
    return driver.text("connect") == QString(linked ? "Отсоединиться" : "Cоединиться");
}

static double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

void TestLink::controlsFollowTheLink()
{
    WindowDriver driver(Kind::TcpRtu);
    QVERIFY(isLinked(driver, false));
    driver.connectPort();
    QVERIFY(isLinked(driver, true));
    QCOMPARE(driver.window.size(), QSize(750, 450));
    driver.click("connect");
    QVERIFY(isLinked(driver, false));
    QCOMPARE(driver.status(), QString("Disconnected"));
    QCOMPARE(driver.text("applyButton"), QString("Запись параметры"));
    QVERIFY(driver.boxes.seen.isEmpty());
}

void TestLink::refreshListsTheSystemsPorts()
{
    WindowDriver driver;
    QStringList ports;
    const auto available = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : available)
        ports.append(port.portName());
    driver.click("scanport");
    auto *list = driver.find<QComboBox>("serialPortInfoListBox");
    QStringList listed;
    for (int i = 0; i < list->count(); ++i)
        listed.append(list->itemText(i));
    QCOMPARE(listed, ports);
}

void TestLink::failedOpenIsReportedOnce_data()
{
    QTest::addColumn<QString>("port");
    QTest::newRow("no name") << "";
    QTest::newRow("no such device") << "/dev/no-such-port";
    QTest::newRow("folder") << "/dev";
    QTest::newRow("not a serial line") << "/dev/null";
    QTest::newRow("module gone") << "gone";
    QTest::newRow("hung-up line") << "hung up"; // fails with the error code of a lost port
}

void TestLink::failedOpenIsReportedOnce()
{
    QFETCH(QString, port);
    WindowDriver driver(Kind::RtuTcp);
    const int master = posix_openpt(O_RDWR | O_NOCTTY);
    QVERIFY(grantpt(master) == 0 && unlockpt(master) == 0);
    const int line = open(ptsname(master), O_RDWR | O_NOCTTY);
    close(master);
    if (port == "gone")
        driver.module.hangUp();
    else
        driver.choosePort(port == "hung up" ? QString("/proc/self/fd/%1").arg(line) : port);
    driver.click("connect");
    QCOMPARE(driver.boxes.seen, QStringList{"Отказано в доступе: Ошибка соединения"});
    close(line);
    QCOMPARE(driver.status(), QString("Порт отказано в доступе"));
    QVERIFY(isLinked(driver, false));
    QCOMPARE(driver.window.size(), QSize(750, 450));
}

void TestLink::portInUseIsNotOpened()
{
    WindowDriver driver;
    QSerialPort other(driver.module.portPath());
    QVERIFY(other.open(QIODevice::ReadWrite));
    driver.click("connect");
    QCOMPARE(driver.boxes.seen.size(), 1);
    other.close();
    driver.connectPort();
    QVERIFY(isLinked(driver, true));
}

void TestLink::otherErrorsAreIgnored()
{
    WindowDriver driver;
    driver.connectPort();
    for (const auto error :
         {QSerialPort::NoError, QSerialPort::ReadError, QSerialPort::WriteError,
          QSerialPort::PermissionError, QSerialPort::TimeoutError, QSerialPort::UnknownError}) {
        QVERIFY(QMetaObject::invokeMethod(&driver.window, "handleError",
                                          Q_ARG(QSerialPort::SerialPortError, error)));
    }
    QVERIFY(isLinked(driver, true));
    QVERIFY(driver.boxes.seen.isEmpty());
}

void TestLink::lossIsReportedOnce_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("running");
    QTest::addColumn<bool>("underBox");
    const QVector<QPair<const char *, Kind>> kinds{
        {"TCP-RTU", Kind::TcpRtu}, {"RTU-TCP", Kind::RtuTcp}, {"universal", Kind::Universal}};
    for (const auto &kind : kinds) {
        for (const QString running : {"", "scan_parameters", "applyButton"}) {
            QTest::newRow(qPrintable(kind.first + (' ' + running)))
                << kind.second << running << false;
        }
        QTest::newRow(qPrintable(kind.first + QString(" behind a box")))
            << kind.second << "scan_parameters" << true;
    }
}

void TestLink::lossIsReportedOnce()
{
    QFETCH(QString, running);
    QFETCH(bool, underBox);
    WindowDriver driver(fetchKind());
    const QString lost = "Critical Error: Ошибка соединения";
    driver.connectPort();
    if (running == "applyButton")
        QVERIFY(driver.readWholeModule());
    if (!running.isEmpty()) {
        driver.click(running);
        driver.slowDown();
        driver.module.faults.silent = underBox;
        QVERIFY(underBox ? driver.tickCommand() : driver.tickAndReply());
    }

    QString applyAtLoss;
    driver.boxes.handle = [&](QMessageBox *box) {
        // An hour of ticks behind the first box, but the loss must come through at once.
        if (driver.boxes.seen.size() == 1 && underBox) {
            driver.module.hangUp();
            QTRY_COMPARE(driver.boxes.seen.last(), lost);
        }
        // The library would now report the dead port without end.
        const double before = cpuSeconds();
        QTest::qWait(200);
        QVERIFY(cpuSeconds() - before < 0.15);
        box->accept();
    };
    if (underBox)
        driver.tick();
    else
        driver.module.hangUp();
    QTRY_VERIFY(!driver.boxes.seen.isEmpty() && Boxes::open().isEmpty());

    QCOMPARE(driver.boxes.seen.count(lost), 1);
    QCOMPARE(driver.boxes.seen.size(), underBox ? 2 : 1);
    QVERIFY(isLinked(driver, false));
    QVERIFY(!driver.activeTimer());
    QCOMPARE(driver.text("applyButton"), QString("Запись параметры"));
    QCOMPARE(driver.mark("lineEdit_MAC"), QString());
}

void TestLink::lossAfterRestartIsQuiet()
{
    WindowDriver driver;
    driver.module.restartMs = 1;
    for (int round = 0; round < 2; ++round) {
        driver.connectPort();
        if (round == 0)
            driver.click("Reset");
        else
            driver.module.hangUp();
        QTRY_COMPARE(driver.status(), QString("Disconnected"));
        QVERIFY(isLinked(driver, false));
        driver.module.comeBack();
        QTRY_VERIFY(QFile::exists(driver.module.portPath()));
    }
    QVERIFY(driver.boxes.seen.isEmpty());
}

void TestLink::moduleIsFoundAgainAfterALoss()
{
    WindowDriver driver;
    driver.connectPort();
    driver.module.hangUp();
    QTRY_COMPARE(driver.boxes.seen.size(), 1);
    driver.module.comeBack();
    driver.connectPort();
    QVERIFY(driver.readWholeModule());
}

QTEST_MAIN(TestLink)
#include "test_link.moc"
