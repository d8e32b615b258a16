// Writing a module, restarting it and returning it to factory settings.

#include "window_fixture.h"

class TestWrite : public QObject {
    Q_OBJECT

private slots:
    void writesEveryParameter_data() { addRowsOf("acknowledgements.txt"); }
    void writesEveryParameter()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        const QByteArray &moment = row[0];
        const int onlyRow = row[1].toInt();
        WindowFixture user(kind);
        user.connectAndFillForm();
        user.start("applyButton");
        QVERIFY(user.deliver("MAC before the first command"));
        QCOMPARE(user.state(), state::writing);
        for (const ParameterCase &write : parametersOf(kind, false)) {
            QVERIFY(user.tickAndAwaitCommand());
            const bool acknowledged = onlyRow == 0 || onlyRow == user.commands.size();
            const QByteArray word = acknowledgementOf(kind);
            if (!acknowledged || moment == "after")
                user.tick();
            if (!acknowledged)
                continue;
            QVERIFY(moment == "with" ? user.deliverWithTick(word) : user.deliver(word));
            QCOMPARE(user.mark(write.widget), green);
            if (moment == "before")
                user.tick();
        }
        const QStringList marksBefore = user.marked();
        user.onBox = [&](QMessageBox *) {
            QCOMPARE(user.state(), state::connected);
            QCOMPARE(user.marked(), marksBefore);
        };
        user.tick();
        QCOMPARE(user.boxes, QStringList{box::success.arg(nameOf(kind))});
        QTRY_COMPARE(user.commands, writeCommandsOf(kind));

        // The restart disconnects the module without an error box. writeAcknowledged stays set, so
        // a later write passes its check.
        user.onBox = {};
        QTRY_COMPARE(user.state(), state::disconnected);
        QTRY_VERIFY(QFile::exists(user.module.portPath()));
        user.click("connect");
        user.start("applyButton");
        user.tick(4);
        QCOMPARE(user.state(), state::writing);
        QCOMPARE(user.boxes.size(), 1);
    }

    void sendsWhatTheFormShows_data() { addKindRows(); }
    void sendsWhatTheFormShows()
    {
        QFETCH(Kind, kind);
        WindowFixture user(kind);
        user.connectAndFillForm();
        for (const QByteArrayList &row : rowsOf("codes.txt", kind)) {
            const QByteArray keyword = row[2].left(row[2].indexOf(':') + 1);
            user.commands.clear();
            user.start("applyButton");
            while (!writeCommandsOf(kind)[user.commands.size()].startsWith(keyword))
                QVERIFY(user.writeRows(1));
            // Not earlier: a value is read when its command is sent.
            user.enter(row[0], row[1]);
            QVERIFY(user.tickAndAwaitCommand());
            QCOMPARE(user.commands.last(), row[2]);
            user.click("applyButton");
        }
    }

    void classifiesWriteReplies_data() { addKindRows(); }
    void classifiesWriteReplies()
    {
        QFETCH(Kind, kind);
        const bool universal = kind == Kind::Universal;
        const QByteArrayList refusals = rowsOf("refusals.txt", kind)[0];
        WindowFixture user(kind);
        user.connectAndFillForm();
        int row = 0;
        for (const ParameterCase &write : parametersOf(kind, false)) {
            const bool lenient = universal && row >= 8;
            const bool tight = write.widget == "lineEdit_portTCP" || write.widget == "comboBox_2";
            user.boxes.clear();
            user.commands.clear();
            user.start("applyButton");
            QVERIFY(user.writeRows(row));
            QVERIFY(user.tickAndAwaitCommand());
            for (const char *other : {"OK", "??", "no"}) {
                QVERIFY(!lenient || user.deliver(other));
                QCOMPARE(user.mark(write.widget), QString());
            }
            QVERIFY(user.deliver(universal ? "o\rk\n" : "O\rK\n"));
            QCOMPARE(user.mark(write.widget), green);

            user.onBox = [&](QMessageBox *) {
                QVERIFY(user.deliver("OK") && user.deliver("MAC 01-02")); // ignored
                QCOMPARE(user.mark(write.widget), red);
            };
            // Arrives together with the tick that would send the next command.
            user.tick();
            QVERIFY(user.deliverWithTick(lenient ? "?\r\n" : refusals[row % refusals.size()]));
            QTRY_COMPARE(user.state(), state::connected);
            QCOMPARE(user.boxes, QStringList{tight ? box::refusedTightly : box::refused});
            QCOMPARE(user.commands, writeCommandsOf(kind).mid(0, ++row));
        }
    }

    void restartsAndResets_data() { addRowsOf("resets.txt"); }
    void restartsAndResets()
    {
        QFETCH(QByteArrayList, row);
        const QByteArrayList commands = row.mid(2);
        for (const bool writing : {false, true}) {
            WindowFixture user;
            user.connectAndFillForm();
            if (writing) {
                user.start("applyButton");
                QVERIFY(user.tickAndAwaitCommand());
            }
            const QString before = user.state();
            user.commands.clear();
            user.boxAnswer = row[1];
            user.click(row[0]);
            QCOMPARE(user.boxes.join(""), row[1].isEmpty() ? "" : box::factoryReset);
            QCOMPARE(user.state(), before);

            user.boxes.clear();
            QTest::qWait(30); // no other command may arrive
            QTRY_COMPARE(user.commands, commands);
            if (!commands.isEmpty()) { // a lost port is not reported any more
                QTRY_COMPARE(user.text("connect"), QString("Cоединиться"));
                QTRY_VERIFY(QFile::exists(user.module.portPath()));
                user.click("connect");
            }
            user.module.hangUp();
            QTRY_COMPARE(user.text("connect"), QString("Cоединиться"));
            QCOMPARE(user.boxes.join(""), commands.isEmpty() ? box::portLost : "");
        }
    }
};

WINDOW_TEST_MAIN(TestWrite)
#include "test_write.moc"
