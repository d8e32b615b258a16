// Reading a module: what is asked, how replies are taken apart, and what goes on behind boxes.

#include "window_driver.h"

#include <QCheckBox>
#include <QElapsedTimer>

class TestRead : public QObject {
    Q_OBJECT

private slots:
    void readsEveryParameter_data() { addKindRows(); }
    void readsEveryParameter();
    void readsByTheRealClock();
    void takesRepliesApart_data();
    void takesRepliesApart();
    void repliesAreJudgedByTheStep();
    void deliveriesAreParsedOneByOne();
    void silentModuleIsReported_data() { addKindRows(); }
    void silentModuleIsReported();
    void ticksGoOnBehindTheNoConnectionBox_data() { addKindRows(); }
    void ticksGoOnBehindTheNoConnectionBox();
    void deliveriesGoOnBehindTheEmptyDeliveryBox();
    void emptyDeliveriesDoNotPileUpBoxes();
    void stopClickEndsTheRead_data() { addKindRows(); }
    void stopClickEndsTheRead();
    void closedPortStopsTheRead();
    void startEmptiesTheFields();
};

void TestRead::readsEveryParameter()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    const QVector<ParameterCase> parameters = parametersOf(kind);
    for (const ParameterCase &parameter : parameters)
        driver.module.setValue(parameter.query, parameter.onLine);
    driver.connectPort();
    driver.click("scan_parameters");
    QCOMPARE(driver.text("scan_parameters"), QString("Стоп сканирования"));
    driver.slowDown();
    for (const ParameterCase &parameter : parameters) {
        QVERIFY(driver.tickAndReply());
        QCOMPARE(driver.commands.last(), QByteArray(parameter.query));
        QCOMPARE(driver.text(parameter.widget), QString(parameter.inForm));
        QCOMPARE(driver.mark(parameter.widget), QString(green));
    }
    driver.tick();

    QVERIFY(!driver.activeTimer());
    QCOMPARE(driver.text("scan_parameters"), QString("Сканировать"));
    QCOMPARE(driver.commands.size(), parameters.size());
    for (const ParameterCase &parameter : parameters) {
        const QString name = parameter.widget;
        const bool displayOnly = name == "lineEdit_MAC" || name == "lineEdit_version";
        QCOMPARE(driver.mark(name), QString(displayOnly && kind == Kind::Universal ? lilac : ""));
        QCOMPARE(driver.text(name), QString(parameter.inForm));
    }
}

void TestRead::readsByTheRealClock()
{
    WindowDriver driver(Kind::TcpRtu);
    driver.connectPort();
    QElapsedTimer clock;
    clock.start();
    driver.click("scan_parameters");
    QTRY_VERIFY_WITH_TIMEOUT(!driver.activeTimer(), 30000);
    QVERIFY(clock.elapsed() > 8000); // nine ticks of a second
    QCOMPARE(driver.commands.join(','),
             QByteArray("MAC,ip,MASK,GATEWAY,PORT TCP,parity,SPEED RS485,STOP BIT"));
    QCOMPARE(driver.text("comboBox_2"), QString("#1"));
}

void TestRead::takesRepliesApart_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("query"); // whose reply it is
    QTest::addColumn<QByteArray>("delivery");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("mark");
    const Kind fixed = Kind::RtuTcp;
    const Kind universal = Kind::Universal;
    const struct {
        Kind kind;
        const char *query;
        QByteArray delivery;
        const char *shown, *mark;
    } rows[] = {
        // keyword and separator are not looked at, the width is
        {fixed, "ip", "xx:10.0.0.1", "10.0.0.1", green},
        {fixed, "ip", "ip 255.255.255.255.255", "255.255.255.255", green},
        {fixed, "MAC", "MAC 0123456789abcdefghij", "0123456789abcdefgh", green},
        {fixed, "ip", "ip ", "", red},
        {fixed, "ip", "i", "", red},
        {fixed, "ip", "ip  10.0.0.1 ", " 10.0.0.1 ", green},
        {fixed, "MASK", "\r\nMA\nSK 255.0.0.0\r", "255.0.0.0", green},
        {fixed, "GATEWAY", QByteArray("GATEWAY 10.0.0.1\0junk", 21), "10.0.0.1", green},
        {fixed, "ip", "ip \xd0\xb9\xff", "\xd0\xb9\xef\xbf\xbd", green},
        {universal, "version", "version 1234567890123", "1234567890", green},
        {universal, "timeout response", "timeout response 60000", "6000", green},
        {universal, "rtu virtual id", "rtu virtual id 2471", "247", green},
        // codes and their near misses
        {fixed, "parity", "parity 0", "#1", green},
        {fixed, "parity", "parity 1", "#2", green},
        {fixed, "parity", "parity 2", "#3", green},
        {fixed, "parity", "parity none", "#1", green},
        {fixed, "parity", "parity nonesuch", "#1", green},
        {fixed, "parity", "parity odd", "#0", red},
        {fixed, "parity", "parity  0", "#0", red},
        {fixed, "parity", "parity 0 ", "#0", red},
        {universal, "parity", "parity none", "#1", green},
        {universal, "parity", "parity odd", "#2", green},
        {universal, "parity", "parity even", "#3", green},
        {universal, "parity", "parity 0", "#0", red},
        {universal, "parity", "parity Odd", "#0", red},
        {fixed, "SPEED RS485", "SPEED RS485 1200", "#1", green},
        {fixed, "SPEED RS485", "SPEED RS485 57200", "#7", green},
        {fixed, "SPEED RS485", "SPEED RS485 57600", "#0", red},
        {fixed, "SPEED RS485", "SPEED RS485 256000", "#10", green},
        {fixed, "SPEED RS485", "SPEED RS485 9600 ", "#0", red},
        {universal, "SPEED RS485", "SPEED RS485 57200", "#7", green},
        {universal, "SPEED RS485", "SPEED RS485 57600", "#0", red},
        {fixed, "STOP BIT", "STOP BIT 2", "#2", green},
        {fixed, "STOP BIT", "STOP BIT 3", "#0", red},
        {universal, "MODE TCP", "MODE TCP server", "#1", green},
        {universal, "MODE TCP", "MODE TCP client", "#2", green},
        {universal, "MODE TCP", "MODE TCP SERVER", "#0", red},
        {universal, "tcp slave id", "tcp slave id off", "", green},
        {universal, "tcp slave id", "tcp slave id offline", "", green},
        {universal, "tcp slave id", "tcp slave id OFF", "OFF", green},
        {universal, "tcp slave id", "tcp slave id ", "", lilac},
    };
    for (const auto &row : rows)
        QTest::newRow(row.delivery.constData())
            << row.kind << row.query << row.delivery << row.shown << row.mark;
}

void TestRead::takesRepliesApart()
{
    QFETCH(QString, query);
    QFETCH(QByteArray, delivery);
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.connectPort();
    QVERIFY(driver.deliver("answers at all"));
    driver.module.faults.silent = true;
    driver.click("scan_parameters");
    driver.slowDown();
    do {
        QVERIFY(driver.tickCommand());
    } while (driver.commands.last() != query);
    QVERIFY(driver.deliver(delivery));

    QString widget;
    const QVector<ParameterCase> parameters = parametersOf(kind);
    for (const ParameterCase &parameter : parameters) {
        if (parameter.query == query)
            widget = parameter.widget;
        else
            QCOMPARE(driver.mark(parameter.widget), QString());
    }
    QTEST(driver.text(widget), "shown");
    QTEST(driver.mark(widget), "mark");
    if (widget == "lineEdit_tcp_id") {
        const bool off = delivery.contains("off");
        QCOMPARE(driver.find<QCheckBox>("checkBox")->isChecked(), off);
        QCOMPARE(driver.isEnabled(widget), !off);
    }
}

void TestRead::repliesAreJudgedByTheStep()
{
    WindowDriver driver(Kind::TcpRtu);
    driver.connectPort();
    QVERIFY(driver.deliver("MAC before any query"));
    QCOMPARE(driver.mark("lineEdit_MAC"), QString());
    driver.module.faults.silent = true;
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.deliver("MAC before the first tick"));
    QCOMPARE(driver.mark("lineEdit_MAC"), QString());
    QVERIFY(driver.tickCommand());
    QVERIFY(driver.tickCommand());
    QVERIFY(driver.deliver("MAC 01-02")); // late: it is the reply to "ip" now
    QCOMPARE(driver.text("lineEdit_ip"), QString(" 01-02"));
    QCOMPARE(driver.mark("lineEdit_MAC"), QString());
}

void TestRead::deliveriesAreParsedOneByOne()
{
    WindowDriver driver(Kind::TcpRtu);
    driver.connectPort();
    driver.module.faults.silent = true;
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickCommand());
    QVERIFY(driver.deliver("MAC 01-02"));
    QCOMPARE(driver.text("lineEdit_MAC"), QString("01-02"));
    QVERIFY(driver.deliver("-03-04\r\n"));
    QCOMPARE(driver.text("lineEdit_MAC"), QString("04"));
    QVERIFY(driver.deliver("-05"));
    QCOMPARE(driver.mark("lineEdit_MAC"), QString(red));
    QCOMPARE(driver.text("lineEdit_MAC"), QString("04"));
}

static QString noConnection(Kind kind)
{
    const char *names[] = {"TCP-RTU", "RTU-TCP", "universal"};
    return QString("Ошибка соединения: нет соединения с модулем Modbus ")
        + names[static_cast<int>(kind)];
}

void TestRead::silentModuleIsReported()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    driver.connectPort();
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickCommand());
    driver.tick(); // returns when the box has been closed
    QCOMPARE(driver.boxes.seen, QStringList{noConnection(kind)});
    QCOMPARE(driver.commands.size(), 1);
    QVERIFY(!driver.activeTimer());
    QCOMPARE(driver.status(), QString("Disconnected"));
    QCOMPARE(driver.text("connect"), QString("Cоединиться"));
    QCOMPARE(driver.text("scan_parameters"), QString("Сканировать"));

    driver.module.faults.silent = false;
    driver.connectPort();
    QVERIFY(driver.readWholeModule());
    QCOMPARE(driver.commands.at(1), driver.commands.at(0));
}

void TestRead::ticksGoOnBehindTheNoConnectionBox()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    driver.connectPort();
    driver.boxes.handle = [&](QMessageBox *box) {
        QTRY_VERIFY(!driver.activeTimer());
        box->accept();
    };
    driver.click("scan_parameters");
    driver.ticksEvery(10);
    QTRY_COMPARE(driver.status(), QString("Disconnected"));
    // The query of the step that raised the box is left out.
    QByteArrayList expected;
    const QVector<ParameterCase> parameters = parametersOf(kind);
    for (const ParameterCase &parameter : parameters)
        expected.append(parameter.query);
    expected.removeAt(1);
    QTRY_COMPARE(driver.commands.join(','), expected.join(','));
    QCOMPARE(driver.boxes.seen.size(), 1);
    QCOMPARE(driver.text("scan_parameters"), QString("Сканировать"));
}

void TestRead::deliveriesGoOnBehindTheEmptyDeliveryBox()
{
    WindowDriver driver(Kind::TcpRtu);
    driver.connectPort();
    driver.module.faults.silent = true;
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickCommand());
    bool handled = false;
    driver.boxes.handle = [&](QMessageBox *box) {
        QVERIFY(driver.deliver("MAC 01-02"));
        QCOMPARE(driver.text("lineEdit_MAC"), QString("01-02"));
        QVERIFY(driver.tickCommand());
        QVERIFY(driver.deliver("ip 10.0.0.1"));
        QVERIFY(driver.deliver("ip 10.0.0.2"));
        QCOMPARE(driver.text("lineEdit_ip"), QString("10.0.0.2"));
        handled = true;
        box->accept();
    };
    QVERIFY(driver.deliver("\r\n"));
    QTRY_VERIFY(handled && Boxes::open().isEmpty());
    QCOMPARE(driver.boxes.seen, QStringList{"нет соединения с модуля: Ошибка соединения"});
    QVERIFY(driver.activeTimer());
}

void TestRead::emptyDeliveriesDoNotPileUpBoxes()
{
    WindowDriver driver;
    driver.connectPort();
    driver.boxes.handle = [](QMessageBox *) {};
    int most = 0;
    int sent = 0;
    QTimer line; // each box has a nested event loop: what follows must come from inside
    connect(&line, &QTimer::timeout, [&] {
        const QList<QMessageBox *> boxes = Boxes::open();
        most = qMax(most, boxes.size());
        if (++sent <= 100)
            driver.module.send(sent % 2 == 0 ? QByteArray("\n") : QByteArray(1, '\0'));
        else if (!boxes.isEmpty())
            boxes.first()->accept();
    });
    line.start(5);
    QTRY_VERIFY(sent > 100 && Boxes::open().isEmpty());
    QVERIFY(most > 0 && most <= 10);
    QVERIFY(driver.readWholeModule());
}

void TestRead::stopClickEndsTheRead()
{
    WindowDriver driver(fetchKind());
    driver.connectPort();
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickAndReply());
    QVERIFY(driver.tickAndReply());
    driver.click("scan_parameters");
    QVERIFY(!driver.activeTimer());
    QCOMPARE(driver.text("scan_parameters"), QString("Сканировать"));
    driver.commands.clear();
    QVERIFY(driver.readWholeModule());
    QCOMPARE(driver.commands.size(), driver.module.queries().size());
}

void TestRead::closedPortStopsTheRead()
{
    WindowDriver driver(Kind::RtuTcp);
    driver.connectPort();
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickAndReply());
    QTimer *scan = driver.activeTimer();
    QVERIFY(QMetaObject::invokeMethod(&driver.window, "closeport"));
    scan->start();
    driver.tick();
    QVERIFY(!scan->isActive());
    QVERIFY(driver.debugLines.contains("error connecting"));
    QCOMPARE(driver.text("scan_parameters"), QString("Стоп сканирования"));
    driver.click("connect"); // still says disconnect, and makes everything good
    QCOMPARE(driver.text("scan_parameters"), QString("Сканировать"));
}

void TestRead::startEmptiesTheFields()
{
    WindowDriver driver;
    driver.connectPort();
    const QVector<ParameterCase> parameters = parametersOf(Kind::Universal);
    for (const ParameterCase &parameter : parameters) {
        driver.enter(parameter.widget, parameter.inForm);
        driver.find<QWidget>(parameter.widget)->setStyleSheet(green);
    }
    driver.click("scan_parameters");
    const QStringList keepTheirMark{"lineEdit_timewait", "lineEdit_rtu_virtual_id",
                                    "lineEdit_tcp_id"};
    for (const ParameterCase &parameter : parameters) {
        const QString name = parameter.widget;
        QCOMPARE(driver.text(name), QString(parameter.inForm[0] == '#' ? "#0" : ""));
        QCOMPARE(driver.mark(name), QString(keepTheirMark.contains(name) ? green : ""));
    }
}

QTEST_MAIN(TestRead)
#include "test_read.moc"
