// Reading a module: queries, parsing of replies, and reading behind message boxes.

#include "module_commands.h"
#include "window_fixture.h"

class TestRead : public QObject {
    Q_OBJECT

private slots:
    void readsEveryParameter_data() { addKindRows(); }
    void readsEveryParameter()
    {
        QFETCH(Kind, kind);
        const bool universal = kind == Kind::Universal;
        QVector<ParameterCase> parameters = parametersOf(kind);
        QStringList lilacFields{"lineEdit_version", "lineEdit_MAC"};
        for (const bool withTick : {false, true}) { // each reply arrives with the next tick
            for (ParameterCase &parameter : parameters) {
                if (withTick && parameter.widget == "lineEdit_tcp_id") {
                    parameter.onLine = "off";
                    parameter.inForm.clear();
                    lilacFields.append(parameter.widget);
                }
            }
            WindowFixture fixture(kind);
            fixture.connectAndFillForm();
            fixture.start("scan_parameters");
            COMPARE(fixture.state(), fixture.known("reading"));
            COMPARE(fixture.filled().join(' '), universal ? "" : expand("<universal>", kind));

            fixture.tick();
            for (const ParameterCase &parameter : parameters) {
                QTRY_COMPARE(fixture.commands.value(fixture.commands.size() - 1), parameter.query);
                const QString label = parameter.widget + ": ";
                if (!withTick && parameter.widget.startsWith("lineEdit")) {
                    const QByteArray digits = "0123456789abcdefghij";
                    QVERIFY(fixture.deliver(simulator::queryReply(parameter.query, digits)));
                    QCOMPARE(fixture.shown(parameter.widget),
                             label + digits.left(parameter.width) + ", green");
                }
                const QByteArray reply = simulator::queryReply(parameter.query, parameter.onLine);
                QVERIFY(withTick ? fixture.deliverWithTick(reply) : fixture.deliver(reply));
                // If the last reply came with the last tick, its mark is removed already.
                const QString mark =
                    fixture.activeTimer() ? "green" : fixture.markOf(parameter.widget);
                COMPARE(fixture.shown(parameter.widget), label + parameter.inForm + ", " + mark);
                if (!withTick)
                    fixture.tick();
            }
            COMPARE(fixture.state(), fixture.known("connected"));
            COMPARE(fixture.boxes, QStringList());
            QCOMPARE(fixture.commands.size(), parameters.size());
            COMPARE(fixture.marked(), universal ? lilacFields : QStringList());
            COMPARE(fixture.marked("lilac"), fixture.marked());
            QCOMPARE(fixture.text("checkBox") == "checked", withTick && universal);
        }
    }

    void parsesReplies_data() { addRowsOf("replies.txt"); }
    void parsesReplies()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        WindowFixture fixture(kind);
        fixture.connectAndFillForm();
        QVERIFY(fixture.deliver("MAC before the start"));
        fixture.start("scan_parameters");
        QVERIFY(fixture.deliver("MAC before the first query"));
        QString widget;
        for (const ParameterCase &parameter : parametersOf(kind)) {
            if (!fixture.commands.endsWith(row[0])) {
                QVERIFY(fixture.tickAndAwaitCommand());
                widget = parameter.widget;
            }
        }
        COMPARE(fixture.state(), fixture.known("reading"));
        const QStringList before = fixture.marked();

        for (const QByteArray &reply : row.mid(1)) {
            const auto arrow = reply.indexOf('>');
            const QString result = reply.mid(arrow + 1);
            const bool isMark = result == "red" || result == "lilac";
            const QString shown =
                isMark ? fixture.text(widget) + ", " + result : result + ", green";
            QVERIFY(fixture.deliver(reply.left(arrow)));
            COMPARE(fixture.shown(widget), widget + ": " + shown);
            QCOMPARE(fixture.text("checkBox") == "checked", reply.contains("slave id off"));
            QCOMPARE(fixture.isEnabled("lineEdit_tcp_id"), !reply.contains("slave id off"));
        }
        fixture.find<QWidget>(widget)->setStyleSheet("");
        COMPARE(fixture.marked(), before);
    }

    void keepsReadingBehindEmptyDeliveryBoxes()
    {
        constexpr int maxBoxes = 10;
        WindowFixture fixture;
        fixture.connectAndFillForm();
        fixture.start("scan_parameters");
        QVERIFY(fixture.tickAndAwaitCommand());
        fixture.leavesDialogsOpen = true;
        fixture.onBox = [&](QMessageBox *) {
            if (fixture.boxes.size() < maxBoxes) { // opens another box above it
                fixture.module.send(fixture.boxes.size() % 2 == 0 ? "\r\n" : QByteArray(1, '\0'));
                return;
            }
            QVERIFY(fixture.deliver("\n"));
            QVERIFY(fixture.deliver("MODE TCP client"));
            QCOMPARE(fixture.text("comboBox_mode"), QString("Клиент TCP"));
            QVERIFY(fixture.tickAndAwaitCommand());
            QVERIFY(fixture.deliver("version 1") && fixture.deliver("version 2"));
            QCOMPARE(fixture.text("lineEdit_version"), QString("2"));
            for (QMessageBox *box : fixture.window.findChildren<QMessageBox *>())
                box->accept();
        };
        QVERIFY(fixture.deliver("\r\n"));
        QTRY_COMPARE(fixture.boxes.size(), maxBoxes);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(fixture.boxes.count(fixture.known("empty delivery")), maxBoxes);
    }
};

WINDOW_TEST_MAIN(TestRead)
#include "test_read.moc"
