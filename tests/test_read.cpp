// Reading a module: what is asked, how replies are taken apart, and what goes on behind boxes.

#include "module_dialect.h"
#include "window_driver.h"

#include <QApplication>
#include <QMessageBox>

class TestRead : public QObject {
    Q_OBJECT

private slots:
    void readsEveryParameter_data() { addKindRows(); }
    void readsEveryParameter()
    {
        QFETCH(Kind, kind);
        const QVector<ParameterCase> parameters = parametersOf(kind);
        for (const bool withTick : {false, true}) { // each reply falls due with the tick behind it
            WindowDriver driver(kind);
            driver.prepare();
            driver.start("scan_parameters");
            QCOMPARE(driver.state(), state::reading);
            const QString others = "comboBox_mode lineEdit_version lineEdit_timewait "
                                   "lineEdit_rtu_virtual_id lineEdit_tcp_id";
            QCOMPARE(driver.filled().join(' '), kind == Kind::Universal ? "" : others);

            driver.tick();
            for (const ParameterCase &parameter : parameters) {
                QTRY_COMPARE(driver.commands.value(driver.commands.size() - 1), parameter.query);
                const QByteArray reply = simulator::queryReply(parameter.query, parameter.onLine);
                QVERIFY(withTick ? driver.deliverWithTick(reply) : driver.deliver(reply));
                QCOMPARE(driver.text(parameter.widget), parameter.inForm);
                if (driver.activeTimer()) // else the tick with the last reply was the end
                    QCOMPARE(driver.mark(parameter.widget), green);
                if (!withTick)
                    driver.tick();
            }
            QCOMPARE(driver.state(), state::connected);
            QCOMPARE(driver.boxes, QStringList());
            QCOMPARE(driver.commands.size(), parameters.size());
            const QStringList displayOnly{"lineEdit_version", "lineEdit_MAC"};
            QCOMPARE(driver.marked(), kind == Kind::Universal ? displayOnly : QStringList());
            QCOMPARE(driver.marked(lilac), driver.marked());
        }
    }

    void readsASlaveIdThatIsOff()
    {
        WindowDriver driver;
        driver.prepare();
        driver.start("scan_parameters");
        for (const ParameterCase &parameter : parametersOf(Kind::Universal)) {
            QVERIFY(driver.tickCommand());
            QVERIFY(driver.deliver(simulator::queryReply(parameter.query, "off")));
        }
        driver.tick();
        QCOMPARE(driver.state(), state::connected);
        QCOMPARE(driver.marked(lilac).last(), QString("lineEdit_tcp_id"));
        QCOMPARE(driver.text("checkBox"), QString("checked"));
    }

    void anAnswerIsEnoughUnlessAnEmptyOneFollows()
    {
        WindowDriver driver;
        driver.prepare();
        QVERIFY(driver.deliver("?"));
        driver.start("scan_parameters");
        driver.tick();
        driver.tick();
        QCOMPARE(driver.state(), state::reading);
        QVERIFY(driver.deliver("\r"));
        QTRY_COMPARE(driver.boxes, QStringList{box::emptyDelivery});
        driver.click("scan_parameters");
        driver.start("scan_parameters");
        driver.tick();
        driver.tick();
        QCOMPARE(driver.boxes.last(), box::noConnection.arg(nameOf(Kind::Universal)));
    }

    void takesRepliesApart_data() { addRowsOf("replies.txt"); }
    void takesRepliesApart()
    {
        QFETCH(Kind, kind);
        QFETCH(QByteArrayList, row);
        WindowDriver driver(kind);
        driver.prepare();
        QVERIFY(driver.deliver("MAC before the start"));
        driver.start("scan_parameters");
        QVERIFY(driver.deliver("MAC before the first query"));
        QString widget;
        for (const ParameterCase &parameter : parametersOf(kind)) {
            if (!driver.commands.endsWith(row[0])) {
                QVERIFY(driver.tickCommand());
                widget = parameter.widget;
            }
        }
        QCOMPARE(driver.state(), state::reading);
        const QStringList before = driver.marked();

        const QMap<QString, QString> otherMarks{{"red", red}, {"lilac", lilac}};
        for (const QByteArray &reply : row.mid(1)) {
            const auto arrow = reply.indexOf('>');
            const QString shown = reply.mid(arrow + 1);
            const QString previous = driver.text(widget);
            QVERIFY(driver.deliver(reply.left(arrow)));
            QCOMPARE(driver.text(widget), otherMarks.contains(shown) ? previous : shown);
            QCOMPARE(driver.mark(widget), otherMarks.value(shown, green));
            QCOMPARE(driver.text("checkBox") == "checked", reply.contains("off"));
            QCOMPARE(driver.isEnabled("lineEdit_tcp_id"), !reply.contains("off"));
        }
        driver.find<QWidget>(widget)->setStyleSheet("");
        QCOMPARE(driver.marked(), before);
    }

    void goesOnBehindTheBoxesOfEmptyDeliveries()
    {
        constexpr int mostBoxes = 10;
        WindowDriver driver;
        driver.prepare();
        driver.start("scan_parameters");
        QVERIFY(driver.tickCommand());
        driver.leavesDialogsOpen = true;
        const auto look = [&] {
            QVERIFY(driver.deliver("\n"));
            QVERIFY(driver.deliver("MODE TCP client"));
            QCOMPARE(driver.text("comboBox_mode"), QString("Клиент TCP"));
            QVERIFY(driver.tickCommand());
            QVERIFY(driver.deliver("version 1"));
            QVERIFY(driver.deliver("version 2"));
            QCOMPARE(driver.text("lineEdit_version"), QString("2"));
        };
        driver.onBox = [&](QMessageBox *) {
            if (driver.boxes.size() < mostBoxes) { // another one over it
                driver.module.send(driver.boxes.size() % 2 == 0 ? "\r\n" : QByteArray(1, '\0'));
                return;
            }
            look();
            for (QMessageBox *box : driver.window.findChildren<QMessageBox *>())
                box->accept();
        };
        QVERIFY(driver.deliver("\r\n"));
        QTRY_COMPARE(driver.boxes.size(), mostBoxes);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(driver.boxes.count(box::emptyDelivery), mostBoxes);
    }
};

QTEST_MAIN(TestRead)
#include "test_read.moc"
