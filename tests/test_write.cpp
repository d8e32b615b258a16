// Writing a module.

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
        COMPARE(user.state(), user.known("writing"));
        for (const ParameterCase &write : parametersOf(kind, false)) {
            QVERIFY(user.tickAndAwaitCommand());
            const bool acknowledged = onlyRow == 0 || onlyRow == user.commands.size();
            const QByteArray word = acknowledgementOf(kind);
            if (!acknowledged || moment == "after")
                user.tick();
            if (!acknowledged)
                continue;
            QVERIFY(moment == "with" ? user.deliverWithTick(word) : user.deliver(word));
            QCOMPARE(write.widget + user.markOf(write.widget), write.widget + "green");
            if (moment == "before")
                user.tick();
        }
        const QStringList marksBefore = user.marked();
        user.onBox = [&](QMessageBox *) {
            COMPARE(user.state(), user.known("connected"));
            COMPARE(user.marked(), marksBefore);
        };
        user.tick();
        COMPARE(user.boxes, QStringList{user.known("success")});
        TRY_COMPARE(user.commands, writeCommandsOf(kind));
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
        const QByteArray ok = acknowledgementOf(kind);
        const QByteArray otherOk = acknowledgementOf(universal ? Kind::TcpRtu : Kind::Universal);
        const QByteArrayList refusals{otherOk, ok + ' ', "Ok", ok + ok, "no", "?"};
        WindowFixture user(kind);
        user.connectAndFillForm();
        int row = 0;
        for (const ParameterCase &write : parametersOf(kind, false)) {
            const auto marked = [&] {
                return QString(write.widget + ' ' + user.markOf(write.widget));
            };
            const bool lenient = universal && write.exceptions.contains("lenient");
            const bool tight = write.exceptions.contains("tight");
            user.boxes.clear();
            user.commands.clear();
            user.start("applyButton");
            QVERIFY(user.writeRows(row));
            QVERIFY(user.tickAndAwaitCommand());
            for (const QByteArray &other : refusals.mid(0, lenient ? 5 : 0)) {
                QVERIFY(user.deliver(other));
                QCOMPARE(marked(), write.widget + ' ');
            }
            QVERIFY(user.deliver(QByteArray(ok).insert(1, '\r') + '\n'));
            QCOMPARE(marked(), write.widget + " green");

            user.onBox = [&](QMessageBox *) {
                QVERIFY(user.deliver(ok) && user.deliver("MAC 01-02")); // ignored
                QCOMPARE(marked(), write.widget + " red");
            };
            // Arrives together with the tick that would send the next command.
            user.tick();
            QVERIFY(user.deliverWithTick(lenient ? "?\r\n" : refusals[row % refusals.size()]));
            TRY_COMPARE(user.state(), user.known("connected"));
            COMPARE(user.boxes, QStringList{user.known(tight ? "refused tightly" : "refused")});
            COMPARE(user.commands, writeCommandsOf(kind).mid(0, row + 1));
            ++row;
        }
    }
};

WINDOW_TEST_MAIN(TestWrite)
#include "test_write.moc"
