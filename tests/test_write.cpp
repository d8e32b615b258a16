// Writing a module, restarting it and returning it to factory settings.

#include "module_dialect.h"
#include "window_driver.h"

#include <QElapsedTimer>

namespace {

/// One row of a write list as the form, the line and the refusal box have it.
struct WriteCase {
    const char *widget;
    const char *entered;
    const char *command;
    const char *failure = " Ошибка записи ";
    bool refusedByQuestionMark = false;
};

QList<WriteCase> writesOf(Kind kind)
{
    const bool universal = kind == Kind::Universal;
    const char *tight = "Ошибка записи ";
    const char *wide = " Ошибка записи ";
    QList<WriteCase> list{
        {"lineEdit_ip", "192.168.0.10", "CHANGE IP:192.168.0.10"},
        {"lineEdit_mask", "255.255.0.0", "CHANGE MASK:255.255.0.0"},
        {"lineEdit_gateway", "10.0.0.1", "CHANGE GATEWAY:10.0.0.1"},
        {"lineEdit_portTCP", "502", "CHANGE PORT TCP:502", tight},
        {"comboBox", "#3", universal ? "CHANGE PARITY:even" : "CHANGE PARITY:2"},
        {"comboBox_speed", "#7", "CHANGE SPEED RS485:57600"},
        {"comboBox_2", "#2", "CHANGE STOP BIT:2", tight},
        {"lineEdit_ipservertcp", "10.0.0.9", "CHANGE IP SERVER TCP:10.0.0.9", wide, universal},
        {"lineEdit_timeout", "5", "CHANGE TIMEOUT TCP:5", wide, universal},
    };
    if (kind == Kind::TcpRtu)
        list = list.mid(0, 7);
    if (universal) {
        list.insert(7, {"lineEdit_timewait", "60000", "change timeout response:60000", wide, true});
        list.prepend({"comboBox_mode", "#1", "CHANGE MODE TCP:SERVER"});
        list.append({"lineEdit_rtu_virtual_id", "247", "change rtu virtual id:247", wide, true});
        list.append({"lineEdit_tcp_id", "255", "change tcp slave id:255", wide, true});
    }
    return list;
}

QByteArray acknowledgementOf(Kind kind)
{
    return kind == Kind::Universal ? "ok\r\n" : "OK\r\n";
}

QString name(Kind kind)
{
    return QStringList{"Modbus TCP-RTU", "Modbus RTU-TCP",
                       "Modbus universal"}[static_cast<int>(kind)];
}

QString success(Kind kind)
{
    return "Результы изменения: <FONT COLOR='#008000'>Изменение параметров " + name(kind)
        + " было успешно</FONT>";
}

QString noConnection(Kind kind)
{
    return "Ошибка соединения: нет соединения с модулем " + name(kind);
}

QByteArray restartAfter(Kind kind)
{
    return kind == Kind::Universal ? "reset" : "RESET";
}

QByteArrayList commandsOf(Kind kind)
{
    QByteArrayList commands;
    const QList<WriteCase> writes = writesOf(kind);
    for (const WriteCase &write : writes)
        commands.append(write.command);
    return commands << restartAfter(kind);
}

void startWrite(WindowDriver &driver)
{
    driver.click("applyButton");
    driver.slowDown();
}

/// Connects and fills the form; a first read, stopped at once, makes the apply button work.
void prepare(WindowDriver &driver)
{
    driver.connectPort();
    driver.click("scan_parameters");
    driver.click("scan_parameters");
    const QList<WriteCase> writes = writesOf(driver.module.kind());
    for (const WriteCase &write : writes)
        driver.enter(write.widget, write.entered);
}

/// Sends the first rows of a list, each acknowledged.
bool writeRows(WindowDriver &driver, int count)
{
    for (int row = 0; row < count; ++row) {
        if (!driver.tickCommand() || !driver.deliver(acknowledgementOf(driver.module.kind())))
            return false;
        driver.tick();
    }
    return true;
}

bool hasNoMarks(WindowDriver &driver)
{
    const QList<WriteCase> writes = writesOf(driver.module.kind());
    return std::all_of(writes.begin(), writes.end(),
                       [&](const WriteCase &write) { return driver.mark(write.widget).isEmpty(); });
}

} // namespace

class TestWrite : public QObject {
    Q_OBJECT

private slots:
    void writesEveryRow_data();
    void writesEveryRow();
    void writesByTheRealClock();
    void startsOnlyWhenArmed();
    void appendsTheValue_data();
    void appendsTheValue();
    void everyRowCanBeRefused_data() { addKindRows(); }
    void everyRowCanBeRefused();
    void judgesTheWord_data();
    void judgesTheWord();
    void dropsRepliesBehindTheRefusalBox();
    void silentModuleIsReported_data() { addKindRows(); }
    void silentModuleIsReported();
    void listGoesOnBehindTheNoConnectionBox_data() { addKindRows(); }
    void listGoesOnBehindTheNoConnectionBox();
    void oneAcknowledgementIsEnough_data() { addKindRows(); }
    void oneAcknowledgementIsEnough();
    void everyInterruptionStartsAnew_data();
    void everyInterruptionStartsAnew();
    void restartsAndResets_data();
    void restartsAndResets();
    void moduleChecksValues_data();
    void moduleChecksValues();
    void moduleRefusesInItsWords_data() { addKindRows(); }
    void moduleRefusesInItsWords();
};

void TestWrite::writesEveryRow_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<bool>("late");
    for (const bool late : {false, true}) {
        for (const Kind kind : {Kind::TcpRtu, Kind::RtuTcp, Kind::Universal})
            QTest::newRow(qPrintable(name(kind) + (late ? " late" : " early"))) << kind << late;
    }
}

void TestWrite::writesEveryRow()
{
    QFETCH(bool, late);
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    QCOMPARE(driver.text("applyButton"), QString("Остановить запись"));
    const QList<WriteCase> writes = writesOf(kind);
    for (const WriteCase &write : writes) {
        // At the acknowledgement check the first row's counts, so the second one may come late.
        QVERIFY(driver.tickCommand());
        if (late)
            driver.tick();
        QVERIFY(driver.deliver(acknowledgementOf(kind)));
        QCOMPARE(driver.mark(write.widget), QString(green));
        if (!late)
            driver.tick();
    }
    QString markBehindBox;
    driver.boxes.handle = [&](QMessageBox *box) {
        markBehindBox = driver.mark("lineEdit_ip");
        box->accept();
    };
    driver.tick();
    QCOMPARE(driver.boxes.seen, QStringList{success(kind)});
    QCOMPARE(markBehindBox, QString(green));
    QVERIFY(hasNoMarks(driver));
    QVERIFY(!driver.activeTimer());
    QCOMPARE(driver.text("applyButton"), QString("Запись параметры"));
    QTRY_COMPARE(driver.commands, commandsOf(kind));

    QStringList traces;
    for (const QString &line : qAsConst(driver.debugLines)) {
        if (!line.startsWith("\"data 2:"))
            traces.append(line);
    }
    QStringList expected{"change ip--- \"CHANGE IP:192.168.0.10\"",
                         "change mask--- \"CHANGE MASK:255.255.0.0\"", "\"CHANGE PORT TCP:502\"",
                         "\"CHANGE SPEED RS485:57600\""};
    if (kind == Kind::RtuTcp)
        expected.append("\"CHANGE IP SERVER TCP:10.0.0.9\"");
    if (kind == Kind::Universal) {
        expected.insert(0, "\"\" case_1");
        expected.insert(1, "\"ok\" case_3");
        expected.insert(3, "\"ok\" case_2");
    }
    QCOMPARE(traces, expected);
}

void TestWrite::writesByTheRealClock()
{
    WindowDriver driver(Kind::Universal);
    prepare(driver);
    QVector<qint64> times;
    QElapsedTimer clock;
    connect(&driver.module, &simulator::SimulatedModule::commandReceived,
            [&] { times.append(clock.elapsed()); });
    clock.start();
    driver.click("applyButton");
    QTRY_COMPARE_WITH_TIMEOUT(driver.boxes.seen.size(), 1, 60000);
    QTRY_COMPARE(driver.commands, commandsOf(Kind::Universal));
    for (int i = 0; i < times.size(); ++i) // never early; a busy machine may be late
        QVERIFY2(times[i] > 940 * (2 * i + 1), qPrintable(QString::number(times[i])));
}

void TestWrite::startsOnlyWhenArmed()
{
    WindowDriver driver(Kind::TcpRtu);
    driver.connectPort();
    driver.click("applyButton");
    QVERIFY(!driver.activeTimer()); // the form's own label arms nothing
    driver.click("scan_parameters");
    driver.click("applyButton");
    QCOMPARE(driver.activeTimer(), driver.timer(WindowDriver::Scan));
    driver.click("scan_parameters");
    driver.click("applyButton");
    QCOMPARE(driver.activeTimer(), driver.timer(WindowDriver::Change));
    driver.click("connect");
    QVERIFY(!driver.activeTimer());
    QVERIFY(QMetaObject::invokeMethod(&driver.window, "on_applyButton_clicked"));
    QVERIFY(!driver.activeTimer()); // the port is closed
}

void TestWrite::appendsTheValue_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("widget");
    QTest::addColumn<QString>("entered");
    QTest::addColumn<QByteArray>("command");
    const struct {
        Kind kind;
        const char *widget, *entered, *command;
    } rows[] = {
        {Kind::TcpRtu, "lineEdit_ip", "", "CHANGE IP:"},
        {Kind::TcpRtu, "lineEdit_ip", " 1 ", "CHANGE IP: 1 "},
        {Kind::TcpRtu, "lineEdit_mask", "\xc3\xa9\xd0\xb9", "CHANGE MASK:\xe9?"},
        {Kind::TcpRtu, "comboBox", "#0", "CHANGE PARITY:"},
        {Kind::TcpRtu, "comboBox", "#1", "CHANGE PARITY:0"},
        {Kind::RtuTcp, "comboBox", "#2", "CHANGE PARITY:1"},
        {Kind::RtuTcp, "comboBox_speed", "#0", "CHANGE SPEED RS485:"},
        {Kind::RtuTcp, "comboBox_speed", "#10", "CHANGE SPEED RS485:256000"},
        {Kind::RtuTcp, "comboBox_2", "#0", "CHANGE STOP BIT:"},
        {Kind::Universal, "comboBox", "#1", "CHANGE PARITY:none"},
        {Kind::Universal, "comboBox", "#2", "CHANGE PARITY:odd"},
        {Kind::Universal, "comboBox_mode", "#0", "CHANGE MODE TCP:"},
        {Kind::Universal, "comboBox_mode", "#2", "CHANGE MODE TCP:CLIENT"},
        {Kind::Universal, "comboBox_2", "#1", "CHANGE STOP BIT:1"},
        {Kind::Universal, "lineEdit_tcp_id", "", "change tcp slave id:"},
        {Kind::Universal, "checkBox", "", "change tcp slave id:off"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.command)
            << row.kind << row.widget << row.entered << QByteArray(row.command);
}

void TestWrite::appendsTheValue()
{
    QFETCH(QString, widget);
    QFETCH(QString, entered);
    QFETCH(QByteArray, command);
    WindowDriver driver(fetchKind());
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    const QByteArray keyword = command.left(command.indexOf(':') + 1);
    while (!commandsOf(driver.module.kind())[driver.commands.size()].startsWith(keyword))
        QVERIFY(writeRows(driver, 1));
    // Only now: a value counts as it stands when its command is sent.
    if (widget == "checkBox")
        driver.click(widget);
    else
        driver.enter(widget, entered);
    QVERIFY(driver.tickCommand());
    QCOMPARE(driver.commands.last(), command);
}

void TestWrite::everyRowCanBeRefused()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    const QList<WriteCase> writes = writesOf(kind);
    for (int row = 0; row < writes.size(); ++row) {
        const WriteCase &write = writes[row];
        driver.commands.clear();
        driver.boxes.seen.clear();
        QString markBehindBox;
        driver.boxes.handle = [&](QMessageBox *box) {
            markBehindBox = driver.mark(write.widget);
            box->accept();
        };
        startWrite(driver);
        QVERIFY(writeRows(driver, row));
        QVERIFY(driver.tickCommand());
        QVERIFY(driver.deliver("?"));
        QTRY_COMPARE(driver.text("applyButton"), QString("Запись параметры"));
        QCOMPARE(
            driver.boxes.seen,
            QStringList{QString("Ошибка: <FONT COLOR='#800000'>") + write.failure + "</FONT>"});
        QCOMPARE(markBehindBox, QString(red));
        QVERIFY(hasNoMarks(driver));
        QVERIFY(!driver.activeTimer());
        QCOMPARE(driver.commands, commandsOf(kind).mid(0, row + 1));
        QVERIFY(driver.isEnabled("applyButton")); // still connected
    }
}

void TestWrite::judgesTheWord_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<int>("row");
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("mark"); // red: the list ends
    const int lenient = 8;             // of the universal list
    const struct {
        Kind kind;
        int row;
        const char *reply, *mark;
    } rows[] = {
        {Kind::TcpRtu, 0, "O\rK\n", green},
        {Kind::TcpRtu, 0, "ok", red},
        {Kind::TcpRtu, 1, "OK ", red},
        {Kind::TcpRtu, 1, "OKOK", red},
        {Kind::RtuTcp, 7, "Ok", red},
        {Kind::RtuTcp, 7, "ERROR", red},
        {Kind::Universal, 0, "ok\r\n", green},
        {Kind::Universal, 0, "OK", red},
        {Kind::Universal, 7, "ok ", red},
        {Kind::Universal, lenient, "ok", green},
        {Kind::Universal, lenient, "OK", ""},
        {Kind::Universal, lenient, "??", ""},
        {Kind::Universal, lenient + 1, "no", ""},
        {Kind::Universal, lenient + 4, "?\r\n", red},
    };
    for (const auto &row : rows)
        QTest::newRow(qPrintable(name(row.kind) + ' ' + row.reply))
            << row.kind << row.row << QByteArray(row.reply) << row.mark;
}

void TestWrite::judgesTheWord()
{
    QFETCH(int, row);
    QFETCH(QByteArray, reply);
    QFETCH(QString, mark);
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    QVERIFY(writeRows(driver, row));
    QVERIFY(driver.tickCommand());
    const QString widget = writesOf(kind)[row].widget;
    QString shown; // behind the box, which takes the mark along
    driver.boxes.handle = [&](QMessageBox *box) {
        shown = driver.mark(widget);
        box->accept();
    };
    QVERIFY(driver.deliver(reply));
    QTRY_COMPARE(shown.isEmpty() ? driver.mark(widget) : shown, mark);
    QCOMPARE(driver.activeTimer() == nullptr, mark == red);
}

void TestWrite::dropsRepliesBehindTheRefusalBox()
{
    WindowDriver driver(Kind::TcpRtu);
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    QVERIFY(driver.tickCommand());
    bool dropped = false;
    driver.boxes.handle = [&](QMessageBox *box) {
        dropped = driver.deliver("OK") && driver.deliver("MAC 01-02");
        box->accept();
    };
    QVERIFY(driver.deliver("ERROR"));
    QTRY_VERIFY(dropped && Boxes::open().isEmpty());
    QVERIFY(hasNoMarks(driver));
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickCommand());
    QVERIFY(driver.deliver("MAC 03-04"));
    QCOMPARE(driver.text("lineEdit_MAC"), QString("03-04"));
}

void TestWrite::silentModuleIsReported()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    for (int step = 0; step < 4; ++step)
        driver.tick();
    QCOMPARE(driver.boxes.seen, QStringList{noConnection(kind)});
    QVERIFY(!driver.activeTimer());
    QCOMPARE(driver.status(), QString("Disconnected"));
    QCOMPARE(driver.text("connect"), QString("Cоединиться"));
    QCOMPARE(driver.text("applyButton"), QString("Запись параметры"));
}

void TestWrite::listGoesOnBehindTheNoConnectionBox()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    driver.boxes.handle = [&](QMessageBox *box) {
        if (driver.boxes.seen.size() == 1) {
            QTRY_COMPARE(driver.boxes.seen.size(), 2); // over it, at the end of the list
            QTRY_COMPARE(Boxes::open().size(), 1);
        }
        box->accept();
    };
    driver.click("applyButton");
    driver.ticksEvery(15);
    QTRY_COMPARE(driver.status(), QString("Disconnected"));
    QCOMPARE(driver.boxes.seen, (QStringList{noConnection(kind), success(kind)}));
    QTRY_COMPARE(driver.commands, commandsOf(kind));
}

void TestWrite::oneAcknowledgementIsEnough()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    QVERIFY(writeRows(driver, 1));
    while (driver.activeTimer())
        driver.tick();
    QCOMPARE(driver.boxes.seen, QStringList{success(kind)});
}

void TestWrite::everyInterruptionStartsAnew_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("by");
    for (const Kind kind : {Kind::TcpRtu, Kind::RtuTcp, Kind::Universal}) {
        for (const QString by : {"applyButton", "scan_parameters", "connect", "loss", "refusal"})
            QTest::newRow(qPrintable(name(kind) + ' ' + by)) << kind << by;
    }
}

void TestWrite::everyInterruptionStartsAnew()
{
    QFETCH(QString, by);
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    driver.module.faults.silent = true;
    prepare(driver);
    startWrite(driver);
    QVERIFY(writeRows(driver, 3));
    QVERIFY(driver.tickCommand());
    if (by == "loss") {
        driver.module.hangUp();
        QTRY_VERIFY(!driver.boxes.seen.isEmpty() && Boxes::open().isEmpty());
        driver.module.comeBack();
    } else if (by == "refusal") {
        QVERIFY(driver.deliver("no"));
        QTRY_VERIFY(!driver.boxes.seen.isEmpty() && Boxes::open().isEmpty());
    } else {
        driver.click(by);
    }
    QCOMPARE(driver.text("applyButton"), QString("Запись параметры"));
    if (by == "scan_parameters")
        driver.click("scan_parameters");
    QVERIFY(!driver.activeTimer());

    if (driver.text("connect") == "Cоединиться")
        driver.connectPort();
    driver.commands.clear();
    startWrite(driver);
    QVERIFY(driver.tickCommand());
    QVERIFY(driver.commands.first().startsWith(kind == Kind::Universal ? "CHANGE MODE TCP:"
                                                                       : "CHANGE IP:"));
    driver.click("applyButton");
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickCommand());
    QCOMPARE(driver.commands.last(), driver.module.queries().first());
}

void TestWrite::restartsAndResets_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("answer"); // to the confirmation
    QTest::addColumn<QString>("running");
    QTest::addColumn<QByteArray>("command");
    for (const QString running : {"", "scan_parameters", "applyButton"}) {
        const auto tag = [&](const char *what) { return qPrintable(what + (' ' + running)); };
        QTest::newRow(tag("restart")) << "Reset"
                                      << "" << running << QByteArray("RESET");
        QTest::newRow(tag("yes")) << "reset_allparameters"
                                  << "Да" << running << QByteArray("LOAD SETTING:DEFAULT");
        QTest::newRow(tag("no")) << "reset_allparameters"
                                 << "Нет" << running << QByteArray();
        QTest::newRow(tag("Esc")) << "reset_allparameters"
                                  << "Esc" << running << QByteArray();
    }
}

void TestWrite::restartsAndResets()
{
    QFETCH(QString, button);
    QFETCH(QString, answer);
    QFETCH(QString, running);
    QFETCH(QByteArray, command);
    WindowDriver driver(Kind::Universal);
    driver.module.restartMs = 1;
    prepare(driver);
    if (!running.isEmpty()) {
        driver.click(running);
        driver.slowDown();
        QVERIFY(driver.tickAndReply());
    }
    QTimer *sequence = driver.activeTimer();
    driver.commands.clear();
    driver.boxes.handle = [&](QMessageBox *box) {
        if (answer == "Esc")
            QTest::keyClick(box, Qt::Key_Escape);
        for (QAbstractButton *choice : box->buttons()) {
            if (choice->text() == answer)
                choice->click();
        }
    };
    driver.click(button);
    QCOMPARE(driver.activeTimer(), sequence);
    QCOMPARE(driver.boxes.seen.join(""),
             QString(answer.isEmpty() ? ""
                                      : "Сброс: Вы действительно хотите cбросить к заводским "
                                        "настройкам?"));
    driver.boxes.handle = nullptr;
    if (command.isEmpty()) {
        if (!sequence) {
            driver.click("scan_parameters");
            driver.slowDown();
        }
        if (running == "applyButton")
            driver.tick(); // the idle one
        QVERIFY(driver.tickCommand());
        QVERIFY(!driver.commands.first().startsWith("LOAD"));
        driver.module.hangUp();
        QTRY_COMPARE(driver.boxes.seen.last(), QString("Critical Error: Ошибка соединения"));
    } else {
        QTRY_COMPARE(driver.commands, QByteArrayList{command});
        QTRY_COMPARE(driver.status(), QString("Disconnected"));       // it restarts
        QCOMPARE(driver.boxes.seen.size(), answer.isEmpty() ? 0 : 1); // and that is no error
    }
}

void TestWrite::moduleChecksValues_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("accepted"); // of a keyword, its values between bars
    QTest::addColumn<QString>("refused");
    const Kind fixed = Kind::RtuTcp;
    const Kind universal = Kind::Universal;
    const auto add = [](Kind kind, const char *keyword, const char *accepted, const char *refused) {
        QTest::newRow(keyword) << kind << accepted << refused;
    };
    add(fixed, "CHANGE IP:", "0.0.0.0|255.255.255.255",
        "|1.2.3|1.2.3.4.5|1.2.3.256|1.2.3.x| 1.2.3.4");
    add(fixed, "CHANGE MASK:", "255.255.255.0|255.255.255.252", "|255.0.255.0|abc");
    add(fixed, "CHANGE PORT TCP:", "502|10000|65535", "|501|503|9999|65536|-502|502x");
    add(fixed, "CHANGE PARITY:", "0|1|2", "|3|none|odd");
    add(universal, "CHANGE PARITY:", "none|odd|even", "|0|NONE");
    add(fixed, "CHANGE SPEED RS485:", "1200|57600|256000", "|0|57200|1200 ");
    add(fixed, "CHANGE STOP BIT:", "1|2", "|0|3");
    add(universal, "CHANGE MODE TCP:", "SERVER|CLIENT", "|server");
    add(universal, "change timeout response:", "100|60000", "|99|60001");
    add(universal, "CHANGE TIMEOUT TCP:", "5|240", "|4|241");
    add(universal, "change rtu virtual id:", "1|247", "|0|248|off");
    add(universal, "change tcp slave id:", "1|255|off", "|0|256|OFF");
    add(fixed, "change tcp slave id:", "", "1"); // not a parameter of this kind
}

void TestWrite::moduleChecksValues()
{
    QFETCH(QString, accepted);
    QFETCH(QString, refused);
    const QByteArray keyword = QTest::currentDataTag();
    const auto isTaken = [&](const QString &value) {
        return simulator::parseCommand(fetchKind(), keyword + value.toUtf8()).type
            == simulator::Command::Type::Write;
    };
    const QStringList good = accepted.isEmpty() ? QStringList() : accepted.split('|');
    for (const QString &value : good)
        QVERIFY2(isTaken(value), qPrintable(value));
    const QStringList bad = refused.split('|');
    for (const QString &value : bad)
        QVERIFY2(!isTaken(value), qPrintable(value));
}

void TestWrite::moduleRefusesInItsWords()
{
    const Kind kind = fetchKind();
    WindowDriver driver(kind);
    prepare(driver);
    driver.enter("lineEdit_portTCP", "503");
    startWrite(driver);
    while (driver.activeTimer()) {
        QVERIFY(driver.tickAndReply());
        driver.tick();
    }
    QVERIFY(driver.commands.last() == "CHANGE PORT TCP:503");
    QCOMPARE(driver.debugLines.last(),
             QString(kind == Kind::Universal ? "\"data 2:?\"" : "\"data 2:ERROR\""));
    QTRY_COMPARE(driver.boxes.seen.size(), 1);
    QCOMPARE(driver.module.value("ip"), QByteArray("192.168.0.10"));
    QVERIFY(driver.module.value("PORT TCP") != "503");
}

QTEST_MAIN(TestWrite)
#include "test_write.moc"
