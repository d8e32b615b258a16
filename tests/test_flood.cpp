// A module that sends without pause, from a process of its own.

#include "window_driver.h"

#include <QElapsedTimer>
#include <QProcess>

class TestFlood : public QObject {
    Q_OBJECT

private slots:
    void windowOutlivesTheFlood();
};

static long residentKiB()
{
    QFile status("/proc/self/statm");
    return status.open(QIODevice::ReadOnly) ? status.readAll().split(' ').at(1).toLong() * 4 : 0;
}

void TestFlood::windowOutlivesTheFlood()
{
    constexpr int floodMs = 4000;
    QProcess simulator;
    simulator.start(MODULE_SIMULATOR,
                    {"--kind", "tcp-rtu", "--delay", "1", "--flood", QString::number(floodMs)});
    QVERIFY(simulator.waitForReadyRead());
    WindowDriver driver(Kind::TcpRtu);
    driver.choosePort(simulator.readLine().trimmed());
    driver.connectPort();
    driver.click("scan_parameters");
    driver.ticksEvery(100);
    QTRY_VERIFY(driver.deliveriesHandled() > 0);

    // Clicks that wait their turn, like those of a user.
    QElapsedTimer clock;
    clock.start();
    QVector<qint64> waits;
    qint64 posted = 0;
    QTimer user;
    connect(&user, &QTimer::timeout, this, [&] {
        posted = clock.nsecsElapsed();
        QTimer::singleShot(0, [&] {
            driver.click("scan_parameters");
            waits.append((clock.nsecsElapsed() - posted) / 1000);
        });
    });
    user.start(50);
    qint64 deliveries = 0;
    const long before = residentKiB();
    while (clock.elapsed() < floodMs - 500) {
        QTest::qWait(200);
        deliveries += driver.deliveriesHandled();
        driver.debugLines.clear();
    }
    const long grown = residentKiB() - before;
    user.stop();
    std::sort(waits.begin(), waits.end());
    QVERIFY(waits.size() > 10);
    qInfo("%lld deliveries, %d clicks waited %lld us at the median, %lld us at most; grew %ld KiB",
          deliveries, waits.size(), waits.at(waits.size() / 2), waits.last(), grown);
    QVERIFY(deliveries > 100);
    QVERIFY2(grown < 20 * 1024, qPrintable(QString::number(grown)));

    if (driver.activeTimer())
        driver.click("scan_parameters");
    QTRY_VERIFY_WITH_TIMEOUT(clock.elapsed() > floodMs + 500, 20000);
    simulator.kill();
    simulator.waitForFinished();
    QTRY_COMPARE(driver.status(), QString("Disconnected"));
    QTRY_VERIFY(Boxes::open().isEmpty());
    driver.choosePort(driver.module.portPath());
    driver.connectPort();
    QVERIFY(driver.readWholeModule());
}

QTEST_MAIN(TestFlood)
#include "test_flood.moc"
