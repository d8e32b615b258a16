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
            if (withTick && universal) {
                parameters.last().onLine = "off"; // the slave id
                parameters.last().inForm.clear();
                lilacFields.append(parameters.last().widget);
            }
            WindowFixture user(kind);
            user.connectAndFillForm();
            user.start("scan_parameters");
            QCOMPARE(user.state(), state::reading);
            const QString others = "comboBox_mode lineEdit_version lineEdit_timewait "
                                   "lineEdit_rtu_virtual_id lineEdit_tcp_id";
            QCOMPARE(user.filled().join(' '), universal ? "" : others);

            user.tick();
            for (const ParameterCase &parameter : parameters) {
                QTRY_COMPARE(user.commands.value(user.commands.size() - 1), parameter.query);
                const QByteArray reply = simulator::queryReply(parameter.query, parameter.onLine);
                QVERIFY(withTick ? user.deliverWithTick(reply) : user.deliver(reply));
                QCOMPARE(user.text(parameter.widget), parameter.inForm);
                if (user.activeTimer()) // otherwise the last reply came with the last tick
                    QCOMPARE(user.mark(parameter.widget), green);
                if (!withTick)
                    user.tick();
            }
            QCOMPARE(user.state(), state::connected);
            QCOMPARE(user.boxes, QStringList());
            QCOMPARE(user.commands.size(), parameters.size());
            QCOMPARE(user.marked(), universal ? lilacFields : QStringList());
            QCOMPARE(user.marked(lilac), user.marked());
            QCOMPARE(user.text("checkBox") == "checked", withTick && universal);
        }
    }

    void clientListBeginsWithTheServerList()
    {
        const auto server = readList(ModuleKind::TcpRtu);
        QCOMPARE(readList(ModuleKind::RtuTcp).mid(0, server.size()), server);
    }

    void connectionTestUsesTheLastReply()
    {
        WindowFixture user;
        user.connectAndFillForm();
        QVERIFY(user.deliver("?"));
        user.start("scan_parameters");
        user.tick(2);
        QCOMPARE(user.state(), state::reading);
        QVERIFY(user.deliver("\r"));
        QTRY_COMPARE(user.boxes, QStringList{box::emptyDelivery});
        user.click("scan_parameters");
        user.start("scan_parameters");
        user.tick(2);
        QCOMPARE(user.boxes.last(), box::noConnection.arg(nameOf(Kind::Universal)));
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
        QCOMPARE(user.state(), state::reading);
        const QStringList before = user.marked();

        const QMap<QString, QString> otherMarks{{"red", red}, {"lilac", lilac}};
        for (const QByteArray &reply : row.mid(1)) {
            const auto arrow = reply.indexOf('>');
            const QString shown = reply.mid(arrow + 1);
            const QString previous = user.text(widget);
            QVERIFY(user.deliver(reply.left(arrow)));
            QCOMPARE(user.text(widget), otherMarks.contains(shown) ? previous : shown);
            QCOMPARE(user.mark(widget), otherMarks.value(shown, green));
            QCOMPARE(user.text("checkBox") == "checked", reply.contains("off"));
            QCOMPARE(user.isEnabled("lineEdit_tcp_id"), !reply.contains("off"));
        }
        user.find<QWidget>(widget)->setStyleSheet("");
        QCOMPARE(user.marked(), before);
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
        QCOMPARE(user.boxes.count(box::emptyDelivery), maxBoxes);
    }
};

WINDOW_TEST_MAIN(TestRead)
#include "test_read.moc"
