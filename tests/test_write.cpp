// Writing a module, restarting it and returning it to factory settings.

#include "window_driver.h"

#include <QAbstractButton>
#include <QMessageBox>

class TestWrite : public QObject {
    Q_OBJECT

private slots:
    void writesEveryRow_data() { addRowsOf("acknowledgements.txt"); }
    void writesEveryRow()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        const QByteArray moment = row[0];
        const int onlyRow = row[1].toInt();
        WindowDriver driver(kind);
        driver.prepare();
        driver.start("applyButton");
        QVERIFY(driver.deliver("MAC before the first command"));
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
        const QStringList marksBefore = driver.marked();
        QString stateBehindBox;
        QStringList marksBehindBox;
        driver.onBox = [&](QMessageBox *) {
            stateBehindBox = driver.state();
            marksBehindBox = driver.marked();
        };
        driver.tick();
        QCOMPARE(driver.boxes, QStringList{box::success.arg(nameOf(kind))});
        QCOMPARE(stateBehindBox, state::connected);
        QCOMPARE(marksBehindBox, marksBefore);
        QTRY_COMPARE(driver.commands, writeCommandsOf(kind));

        // The restart takes the module off the line, which is no news, and has been acknowledged
        // enough for a later write.
        driver.onBox = [](QMessageBox *) {};
        QTRY_COMPARE(driver.state(), state::disconnected);
        QTRY_VERIFY(QFile::exists(driver.module.portPath()));
        driver.click("connect");
        driver.start("applyButton");
        for (int tick = 0; tick < 4; ++tick)
            driver.tick();
        QCOMPARE(driver.state(), state::writing);
        QCOMPARE(driver.boxes.size(), 1);
    }

    void sendsWhatTheFormShows_data() { addKindRows(); }
    void sendsWhatTheFormShows()
    {
        QFETCH(Kind, kind);
        WindowDriver driver(kind);
        driver.prepare();
        for (const QByteArrayList &row : rowsOf("codes.txt", kind)) {
            const QByteArray keyword = row[2].left(row[2].indexOf(':') + 1);
            driver.commands.clear();
            driver.start("applyButton");
            while (!writeCommandsOf(kind)[driver.commands.size()].startsWith(keyword))
                QVERIFY(driver.writeRows(1));
            // Only now: a value counts as it stands when its command is sent.
            driver.enter(row[0], row[1]);
            QVERIFY(driver.tickCommand());
            QCOMPARE(driver.commands.last(), row[2]);
            driver.click("applyButton");
        }
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
            driver.onBox = [&](QMessageBox *) {
                QVERIFY(driver.deliver("OK") && driver.deliver("MAC 01-02")); // not judged
                markBehindBox = driver.mark(write.widget);
            };
            // With the tick that would send the next command.
            driver.tick();
            QVERIFY(driver.deliverWithTick(lenient ? "?\r\n" : refusals[row % refusals.size()]));
            QTRY_COMPARE(driver.state(), state::connected);
            QCOMPARE(driver.boxes, QStringList{tight ? box::refusedTightly : box::refused});
            QCOMPARE(markBehindBox, red);
            QCOMPARE(driver.commands, writeCommandsOf(kind).mid(0, ++row));
        }
    }

    void restartsAndResets_data() { addRowsOf("resets.txt"); }
    void restartsAndResets()
    {
        QFETCH(QByteArrayList, row);
        const QString answer = row[1];
        const QByteArrayList commands = row.mid(2);
        for (const bool writing : {false, true}) {
            WindowDriver driver;
            driver.prepare();
            if (writing) {
                driver.start("applyButton");
                QVERIFY(driver.tickCommand());
            }
            const QString before = driver.state();
            driver.commands.clear();
            driver.onBox = [&](QMessageBox *box) {
                if (answer == "Esc")
                    QTest::keyClick(box, Qt::Key_Escape);
                for (QAbstractButton *button : box->buttons()) {
                    if (button->text() == answer)
                        button->click();
                }
            };
            driver.click(row[0]);
            QCOMPARE(driver.boxes.join(""), answer.isEmpty() ? "" : box::factoryReset);
            QCOMPARE(driver.state(), before);

            driver.boxes.clear();
            QTest::qWait(30); // for the commands that must not come
            QTRY_COMPARE(driver.commands, commands);
            if (!commands.isEmpty()) { // a loss is no error any more, neither now nor later
                QTRY_COMPARE(driver.text("connect"), QString("Cоединиться"));
                QTRY_VERIFY(QFile::exists(driver.module.portPath()));
                driver.click("connect");
            }
            driver.module.hangUp();
            QTRY_COMPARE(driver.text("connect"), QString("Cоединиться"));
            QCOMPARE(driver.boxes.join(""), commands.isEmpty() ? box::portLost : "");
        }
    }
};

QTEST_MAIN(TestWrite)
#include "test_write.moc"
