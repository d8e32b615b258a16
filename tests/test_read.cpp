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
        for (const bool withTick :
             {false, true}) { // each reply arrives together with the next tick
            for (ParameterCase &parameter : parameters) {
                if (withTick && parameter.widget == "lineEdit_tcp_id") {
                    parameter.onLine = "off";
                    parameter.inForm.clear();
                    lilacFields.append(parameter.widget);
                }
            }
            WindowFixture user(kind);
            user.connectAndFillForm();
            user.start("scan_parameters");
            COMPARE(user.state(), user.known("reading"));
            COMPARE(user.filled().join(' '), universal ? "" : expand("<universal>", kind));

            user.tick();
            for (const ParameterCase &parameter : parameters) {
                QTRY_COMPARE(user.commands.value(user.commands.size() - 1), parameter.query);
                const QString label = parameter.widget + ": ";
                if (!withTick && parameter.widget.startsWith("lineEdit")) {
                    const QByteArray digits = "0123456789abcdefghij";
                    QVERIFY(user.deliver(simulator::queryReply(parameter.query, digits)));
                    QCOMPARE(user.shown(parameter.widget),
                             label + digits.left(parameter.width) + ", green");
                }
                const QByteArray reply = simulator::queryReply(parameter.query, parameter.onLine);
                QVERIFY(withTick ? user.deliverWithTick(reply) : user.deliver(reply));
                // If the last reply came with the last tick, its mark is removed already.
                const QString mark = user.activeTimer() ? "green" : user.markOf(parameter.widget);
                COMPARE(user.shown(parameter.widget), label + parameter.inForm + ", " + mark);
                if (!withTick)
                    user.tick();
            }
            COMPARE(user.state(), user.known("connected"));
            COMPARE(user.boxes, QStringList());
            QCOMPARE(user.commands.size(), parameters.size());
            COMPARE(user.marked(), universal ? lilacFields : QStringList());
            COMPARE(user.marked("lilac"), user.marked());
            QCOMPARE(user.text("checkBox") == "checked", withTick && universal);
        }
    }

    void parsesReplies_data() { addRowsOf("replies.txt"); }
    void parsesReplies()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        WindowFixture user(kind);
        user.connectAndFillForm();
        QVERIFY(user.deliver("MAC before the start"));
        user.start("scan_parameters");
        QVERIFY(user.deliver("MAC before the first query"));
        QString widget;
        for (const ParameterCase &parameter : parametersOf(kind)) {
            if (!user.commands.endsWith(row[0])) {
                QVERIFY(user.tickAndAwaitCommand());
                widget = parameter.widget;
            }
        }
        COMPARE(user.state(), user.known("reading"));
        const QStringList before = user.marked();

        for (const QByteArray &reply : row.mid(1)) {
            const auto arrow = reply.indexOf('>');
            const QString result = reply.mid(arrow + 1);
            const bool isMark = result == "red" || result == "lilac";
            const QString shown = isMark ? user.text(widget) + ", " + result : result + ", green";
            QVERIFY(user.deliver(reply.left(arrow)));
            COMPARE(user.shown(widget), widget + ": " + shown);
            QCOMPARE(user.text("checkBox") == "checked", reply.contains("off"));
            QCOMPARE(user.isEnabled("lineEdit_tcp_id"), !reply.contains("off"));
        }
        user.find<QWidget>(widget)->setStyleSheet("");
        COMPARE(user.marked(), before);
    }

    void keepsReadingBehindEmptyDeliveryBoxes()
    {
        constexpr int maxBoxes = 10;
        WindowFixture user;
        user.connectAndFillForm();
        user.start("scan_parameters");
        QVERIFY(user.tickAndAwaitCommand());
        user.leavesDialogsOpen = true;
        const auto look = [&] {
            QVERIFY(user.deliver("\n"));
            QVERIFY(user.deliver("MODE TCP client"));
            QCOMPARE(user.text("comboBox_mode"), QString("Клиент TCP"));
            QVERIFY(user.tickAndAwaitCommand());
            QVERIFY(user.deliver("version 1") && user.deliver("version 2"));
            QCOMPARE(user.text("lineEdit_version"), QString("2"));
        };
        user.onBox = [&](QMessageBox *) {
            if (user.boxes.size() < maxBoxes) { // opens another box above it
                user.module.send(user.boxes.size() % 2 == 0 ? "\r\n" : QByteArray(1, '\0'));
                return;
            }
            look();
            for (QMessageBox *box : user.window.findChildren<QMessageBox *>())
                box->accept();
        };
        QVERIFY(user.deliver("\r\n"));
        QTRY_COMPARE(user.boxes.size(), maxBoxes);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(user.boxes.count(user.known("empty delivery")), maxBoxes);
    }
};

WINDOW_TEST_MAIN(TestRead)
#include "test_read.moc"
