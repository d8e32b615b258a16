// Writing a module, restarting it and returning it to factory settings.

#include "module_dialect.h"
#include "window_driver.h"

#include <QElapsedTimer>

class TestWrite : public QObject {
    Q_OBJECT

private slots:
    void writesEveryRow_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<QString>("moment"); // of an acknowledgement, before or after the idle tick
        QTest::addColumn<int>("onlyRow");    // that is acknowledged
        for (const Kind kind : allKinds) {
            const auto add = [kind](const QString &moment, int onlyRow) {
                const QString name = nameOf(kind) + ' ' + moment + ' ' + QString::number(onlyRow);
                QTest::newRow(qPrintable(name)) << kind << moment << onlyRow;
            };
            for (const char *moment : {"before", "after", "with"})
                add(moment, 0);
            add("before", 1);
            add("with", 2); // that tick is the check
        }
    }

    void writesEveryRow()
    {
        QFETCH(Kind, kind);
        QFETCH(QString, moment);
        QFETCH(int, onlyRow);
        WindowDriver driver(kind);
        driver.prepare();
        driver.start("applyButton");
        QCOMPARE(driver.state(), state::writing);
        for (const ParameterCase &write : writesOf(kind)) {
            QVERIFY(driver.tickCommand());
            const bool acknowledged = onlyRow == 0 || onlyRow == driver.commands.size();
            const QByteArray word = acknowledgementOf(kind);
            if (!acknowledged || moment == "after")
                driver.tick();
            if (!acknowledged)
                continue;
            QVERIFY(moment == "with" ? driver.deliverWithTick(word) : driver.deliver(word));
            QCOMPARE(driver.mark(write.widget), green);
            if (moment == "before")
                driver.tick();
        }
        QString stateBehindBox;
        driver.handleBox = [&](QMessageBox *box) {
            stateBehindBox = driver.state();
            box->accept();
        };
        driver.tick();
        QCOMPARE(driver.boxes, QStringList{box::success.arg(nameOf(kind))});
        QCOMPARE(stateBehindBox, state::connected + ", marks");
        QCOMPARE(driver.state(), state::connected);
        QTRY_COMPARE(driver.commands, writeCommandsOf(kind));
    }

    void writesByTheRealClock()
    {
        WindowDriver driver;
        driver.prepare();
        driver.module.faults.silent = false;
        QVector<qint64> times;
        QElapsedTimer clock;
        connect(&driver.module, &simulator::SimulatedModule::commandReceived,
                [&] { times.append(clock.elapsed()); });
        clock.start();
        driver.click("applyButton");
        QTRY_COMPARE_WITH_TIMEOUT(driver.boxes.size(), 1, 50000);
        QTRY_COMPARE(driver.commands, writeCommandsOf(Kind::Universal));
        for (int i = 0; i < times.size(); ++i) // never early; a busy machine may be late
            QVERIFY2(times[i] > 940 * (2 * i + 1), qPrintable(QString::number(times[i])));
    }

    void sendsWhatTheFormShows_data()
    {
        QTest::addColumn<QByteArrayList>("row");
        for (const QByteArrayList &row : tableOf("codes.txt"))
            QTest::newRow(row[3]) << row;
    }

    void sendsWhatTheFormShows()
    {
        QFETCH(QByteArrayList, row);
        const Kind kind = allKinds[row[0].toInt()];
        const QByteArray keyword = row[3].left(row[3].indexOf(':') + 1);
        WindowDriver driver(kind);
        driver.prepare();
        driver.start("applyButton");
        while (!writeCommandsOf(kind)[driver.commands.size()].startsWith(keyword))
            QVERIFY(driver.writeRows(1));
        // Only now: a value counts as it stands when its command is sent.
        driver.enter(row[1], row[2]);
        if (row[2] == "off")
            driver.click("checkBox");
        QVERIFY(driver.tickCommand());
        QCOMPARE(driver.commands.last(), row[3]);
    }

    void judgesEveryReply_data() { addKindRows(); }
    void judgesEveryReply()
    {
        QFETCH(Kind, kind);
        const bool universal = kind == Kind::Universal;
        const QByteArrayList refusals = universal
            ? QByteArrayList{"OK", "ok ", "Ok", "okok", "no", "?"}
            : QByteArrayList{"ok", "OK ", "Ok", "OKOK", "ERROR", "?"};
        WindowDriver driver(kind);
        driver.prepare();
        int row = 0;
        for (const ParameterCase &write : writesOf(kind)) {
            const bool lenient = universal && row >= 8;
            const bool tight = write.widget == "lineEdit_portTCP" || write.widget == "comboBox_2";
            driver.boxes.clear();
            driver.commands.clear();
            driver.start("applyButton");
            QVERIFY(driver.writeRows(row));
            QVERIFY(driver.tickCommand());
            for (const char *other : {"OK", "??", "no"}) {
                QVERIFY(!lenient || driver.deliver(other));
                QCOMPARE(driver.mark(write.widget), QString());
            }
            QVERIFY(driver.deliver(universal ? "o\rk\n" : "O\rK\n"));
            QCOMPARE(driver.mark(write.widget), green);

            QString markBehindBox;
            bool dropped = false;
            driver.handleBox = [&](QMessageBox *box) {
                markBehindBox = driver.mark(write.widget);
                dropped = driver.deliver("OK") && driver.deliver("MAC 01-02");
                box->accept();
            };
            // With the tick that would send the next command.
            driver.tick();
            QVERIFY(driver.deliverWithTick(lenient ? "?\r\n" : refusals[row % refusals.size()]));
            QTRY_COMPARE(driver.state(), state::connected);
            QCOMPARE(driver.boxes, QStringList{tight ? box::refusedTightly : box::refused});
            QCOMPARE(markBehindBox, red);
            QVERIFY(dropped);
            QCOMPARE(driver.commands, writeCommandsOf(kind).mid(0, ++row));
        }
    }

    void restartsAndResets_data()
    {
        QTest::addColumn<QString>("answer"); // to what only the factory reset asks
        QTest::addColumn<QByteArrayList>("commands");
        QTest::newRow("restart") << QString() << QByteArrayList{"RESET"};
        QTest::newRow("yes") << QString("Да") << QByteArrayList{"LOAD SETTING:DEFAULT"};
        QTest::newRow("no") << QString("Нет") << QByteArrayList{};
        QTest::newRow("Esc") << QString("Esc") << QByteArrayList{};
    }

    void restartsAndResets()
    {
        QFETCH(QString, answer);
        QFETCH(QByteArrayList, commands);
        for (const bool writing : {false, true}) {
            WindowDriver driver;
            driver.prepare();
            driver.module.restartMs = 1;
            if (writing) {
                driver.start("applyButton");
                QVERIFY(driver.tickCommand());
            }
            const QString before = driver.state();
            driver.commands.clear();
            driver.handleBox = [&](QMessageBox *box) {
                if (answer == "Esc")
                    QTest::keyClick(box, Qt::Key_Escape);
                for (QAbstractButton *button : box->buttons()) {
                    if (button->text() == answer)
                        button->click();
                }
            };
            driver.click(answer.isEmpty() ? "Reset" : "reset_allparameters");
            QCOMPARE(driver.boxes.join(""), answer.isEmpty() ? "" : box::factoryReset);
            QCOMPARE(driver.state(), before);

            driver.handleBox = nullptr;
            driver.boxes.clear();
            QTest::qWait(30); // for the commands that must not come
            QTRY_COMPARE(driver.commands, commands);
            if (!commands.isEmpty()) { // a loss is no error any more, neither now nor later
                QTRY_COMPARE(driver.text("connect"), QString("Cоединиться"));
                QTRY_VERIFY(QFile::exists(driver.module.portPath()));
                driver.connectPort();
            }
            driver.module.hangUp();
            QTRY_COMPARE(driver.text("connect"), QString("Cоединиться"));
            QCOMPARE(driver.boxes.join(""), commands.isEmpty() ? box::portLost : "");
        }
    }

    void moduleChecksValues()
    {
        for (const QByteArrayList &row : tableOf("values.txt")) {
            for (const bool good : {true, false}) {
                for (const QByteArray &value : row[good ? 2 : 3].split(',')) {
                    const QByteArray bytes = row[1] + value;
                    const auto command = simulator::parseCommand(allKinds[row[0].toInt()], bytes);
                    QVERIFY2((command.type == simulator::Command::Type::Write) == good, bytes);
                }
            }
        }
    }

    void moduleRefusesInItsWords_data() { addKindRows(); }
    void moduleRefusesInItsWords()
    {
        QFETCH(Kind, kind);
        WindowDriver driver(kind);
        driver.prepare();
        driver.module.faults.silent = false;
        driver.enter("lineEdit_portTCP", "503");
        driver.start("applyButton");
        while (driver.activeTimer()) {
            const int before = driver.deliveriesTraced();
            driver.tick(); // sends
            driver.tick(); // does not
            QTRY_VERIFY(driver.deliveriesTraced() > before);
        }
        QTRY_COMPARE(driver.boxes, QStringList{box::refusedTightly});
        QCOMPARE(driver.commands.last(), QByteArray("CHANGE PORT TCP:503"));
        const QString refusal = kind == Kind::Universal ? "?" : "ERROR";
        QCOMPARE(driver.debugLines.last(), "\"data 2:" + refusal + '"');
        QCOMPARE(driver.module.value("ip"), QByteArray("10.20.30.40"));
        QCOMPARE(driver.module.value("PORT TCP"), QByteArray("502"));
    }
};

QTEST_MAIN(TestWrite)
#include "test_write.moc"
