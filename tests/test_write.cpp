// Writing a module.

#include "window_fixture.h"

#include <QComboBox>

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
        WindowFixture fixture(kind);
        fixture.connectAndFillForm();
        fixture.start("applyButton");
        QVERIFY(fixture.deliver("MAC before the first command"));
        COMPARE(fixture.state(), fixture.known("writing"));
        for (const ParameterCase &write : parametersOf(kind, false)) {
            QVERIFY(fixture.tickAndAwaitCommand());
            const bool acknowledged = onlyRow == 0 || onlyRow == fixture.commands.size();
            const QByteArray word = acknowledgementOf(kind);
            if (!acknowledged || moment == "after")
                fixture.tick();
            if (!acknowledged)
                continue;
            QVERIFY(moment == "with" ? fixture.deliverWithTick(word) : fixture.deliver(word));
            QCOMPARE(fixture.commands.last(), write.command);
            QCOMPARE(write.widget + ' ' + fixture.markOf(write.widget), write.widget + " green");
            if (moment == "before")
                fixture.tick();
        }
        const QStringList marksBefore = fixture.marked();
        fixture.onBox = [&](QMessageBox *) {
            COMPARE(fixture.state(), fixture.known("connected"));
            COMPARE(fixture.marked(), marksBefore);
        };
        fixture.tick();
        COMPARE(fixture.boxes, QStringList{fixture.known("success")});
        TRY_COMPARE(fixture.commands, writeCommandsOf(kind));
    }

    void sendsWhatTheFormShows_data() { addKindRows(); }
    void sendsWhatTheFormShows()
    {
        QFETCH(Kind, kind);
        WindowFixture fixture(kind);
        fixture.connectAndFillForm();
        QMap<QString, int> entries;
        for (const QByteArrayList &row : rowsOf("codes.txt", kind)) {
            ++entries[row[0]];
            const QByteArray keyword = row[2].left(row[2].indexOf(':') + 1);
            fixture.commands.clear();
            fixture.start("applyButton");
            while (!writeCommandsOf(kind)[fixture.commands.size()].startsWith(keyword))
                QVERIFY(fixture.writeRows(1));
            // Not earlier: a value is read when its command is sent.
            fixture.enter(row[0], row[1]);
            QVERIFY(fixture.tickAndAwaitCommand());
            QCOMPARE(fixture.commands.last(), row[2]);
            fixture.click("applyButton");
        }
        for (const ParameterCase &parameter : parametersOf(kind)) {
            const auto *combo = fixture.window.findChild<QComboBox *>(parameter.widget);
            QVERIFY2(!combo || entries[parameter.widget] == combo->count(),
                     qPrintable("an item has no row in codes.txt: " + parameter.widget));
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
        WindowFixture fixture(kind);
        fixture.connectAndFillForm();
        int row = 0;
        for (const ParameterCase &write : parametersOf(kind, false)) {
            const auto marked = [&] {
                return QString(write.widget + ' ' + fixture.markOf(write.widget));
            };
            const bool lenient = universal && write.exceptions.contains("lenient");
            const bool tight = write.exceptions.contains("tight");
            fixture.boxes.clear();
            fixture.commands.clear();
            fixture.start("applyButton");
            QVERIFY(fixture.writeRows(row));
            QVERIFY(fixture.tickAndAwaitCommand());
            for (const QByteArray &other : refusals.mid(0, lenient ? 5 : 0)) {
                QVERIFY(fixture.deliver(other));
                QCOMPARE(marked(), write.widget + ' ');
            }
            QVERIFY(fixture.deliver(QByteArray(ok).insert(1, '\r') + '\n'));
            QCOMPARE(marked(), write.widget + " green");

            fixture.onBox = [&](QMessageBox *) {
                QVERIFY(fixture.deliver(ok) && fixture.deliver("MAC 01-02")); // ignored
                QCOMPARE(marked(), write.widget + " red");
            };
            // Arrives together with the tick that would send the next command.
            fixture.tick();
            QVERIFY(fixture.deliverWithTick(lenient ? "?\r\n" : refusals[row % refusals.size()]));
            TRY_COMPARE(fixture.state(), fixture.known("connected"));
            COMPARE(fixture.boxes,
                    QStringList{fixture.known(tight ? "refused tightly" : "refused")});
            COMPARE(fixture.commands, writeCommandsOf(kind).mid(0, row + 1));
            ++row;
        }
    }
};

WINDOW_TEST_MAIN(TestWrite)
#include "test_write.moc"
