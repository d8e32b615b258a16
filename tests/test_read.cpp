// Reading a module: what is asked, how replies are taken apart, and what goes on behind boxes.

#include "module_dialect.h"
#include "window_driver.h"

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>

class TestRead : public QObject {
    Q_OBJECT

private slots:
    void readsEveryParameter_data() { addKindRows(); }
    void readsEveryParameter()
    {
        QFETCH(Kind, kind);
        const QVector<ParameterCase> parameters = parametersOf(kind);
        WindowDriver driver(kind);
        driver.prepare();
        for (const ParameterCase &parameter : parameters)
            driver.find<QWidget>(parameter.widget)->setStyleSheet(green);
        driver.start("scan_parameters");
        const QStringList keepTheirMark{"lineEdit_timewait", "lineEdit_rtu_virtual_id",
                                        "lineEdit_tcp_id"};
        for (const ParameterCase &parameter : parameters) {
            const QString &name = parameter.widget;
            QCOMPARE(driver.text(name), QString(parameter.inForm[0] == '#' ? "#0" : ""));
            QCOMPARE(driver.mark(name), keepTheirMark.contains(name) ? green : "");
        }

        for (const ParameterCase &parameter : parameters) {
            QVERIFY(driver.tickCommand());
            QCOMPARE(driver.commands.last(), parameter.query);
            QVERIFY(driver.deliver(simulator::queryReply(parameter.query, parameter.onLine)));
            QCOMPARE(driver.text(parameter.widget), parameter.inForm);
            QCOMPARE(driver.mark(parameter.widget), green);
        }
        if (kind == Kind::Universal)
            QVERIFY(driver.deliver("tcp slave id off"));
        driver.tick();
        QVERIFY(driver.state().startsWith(state::connected));
        QCOMPARE(driver.commands.size(), parameters.size());
        for (const ParameterCase &parameter : parameters) {
            const QString &name = parameter.widget;
            const bool isLilac = parameter.command.isEmpty() || name == "lineEdit_tcp_id";
            QCOMPARE(driver.mark(name), kind == Kind::Universal && isLilac ? lilac : "");
        }
    }

    void repliesComeBeforeTheTickThatIsDueWithThem_data() { addKindRows(); }
    void repliesComeBeforeTheTickThatIsDueWithThem()
    {
        QFETCH(Kind, kind);
        WindowDriver driver(kind);
        driver.prepare();
        driver.start("scan_parameters");
        QVERIFY(driver.tickCommand());
        for (const ParameterCase &parameter : parametersOf(kind)) {
            QTRY_COMPARE(driver.commands.last(), parameter.query);
            const QByteArray reply = simulator::queryReply(parameter.query, parameter.onLine);
            QVERIFY(driver.deliverWithTick(reply));
            QCOMPARE(driver.text(parameter.widget), parameter.inForm);
        }
        QVERIFY(driver.state().startsWith(state::connected)); // the last tick was the end
        QCOMPARE(driver.boxes, QStringList());
    }

    void readsByTheRealClock()
    {
        WindowDriver driver(Kind::TcpRtu);
        driver.connectPort();
        QElapsedTimer clock;
        clock.start();
        driver.click("scan_parameters");
        QTRY_VERIFY_WITH_TIMEOUT(driver.state().startsWith(state::connected), 30000);
        QVERIFY(clock.elapsed() > 8000); // nine ticks of a second
        QCOMPARE(driver.commands, driver.module.queries().toList());
        for (const ParameterCase &parameter : parametersOf(Kind::TcpRtu))
            QVERIFY(driver.text(parameter.widget) != (parameter.inForm[0] == '#' ? "#0" : ""));
    }

    void takesRepliesApart_data()
    {
        QTest::addColumn<QByteArrayList>("row");
        for (const QByteArrayList &row : tableOf("replies.txt"))
            QTest::newRow(row[2]) << row;
    }

    void takesRepliesApart()
    {
        QFETCH(QByteArrayList, row);
        const Kind kind = allKinds[row[0].toInt()];
        WindowDriver driver(kind);
        driver.prepare();
        QVERIFY(driver.deliver("MAC before the start"));
        driver.start("scan_parameters");
        QVERIFY(driver.deliver("MAC before the first query"));
        QString widget;
        for (const ParameterCase &parameter : parametersOf(kind)) {
            if (!driver.commands.endsWith(row[1])) {
                QVERIFY(driver.tickCommand());
                widget = parameter.widget;
            }
        }
        const QString before = driver.state();
        QVERIFY(before.endsWith("read")); // and no marks

        const QMap<QString, QString> otherMarks{{"red", red}, {"lilac", lilac}};
        for (const QByteArray &reply : row.mid(2)) {
            const int arrow = reply.indexOf('>');
            const QString shown = reply.mid(arrow + 1);
            const QString previous = driver.text(widget);
            QVERIFY(driver.deliver(reply.left(arrow)));
            QCOMPARE(driver.text(widget), otherMarks.contains(shown) ? previous : shown);
            QCOMPARE(driver.mark(widget), otherMarks.value(shown, green));
            QCOMPARE(driver.find<QCheckBox>("checkBox")->isChecked(), reply.contains("off"));
            QCOMPARE(driver.isEnabled("lineEdit_tcp_id"), !reply.contains("off"));
        }
        driver.find<QWidget>(widget)->setStyleSheet("");
        QCOMPARE(driver.state(), before); // nothing else is marked
    }

    void goesOnBehindTheBoxesOfEmptyDeliveries()
    {
        constexpr int mostBoxes = 10;
        WindowDriver driver;
        driver.prepare();
        driver.start("scan_parameters");
        QVERIFY(driver.tickCommand());
        driver.handleBox = [&](QMessageBox *) {
            if (driver.boxes.size() < mostBoxes) { // another one over it
                driver.module.send(driver.boxes.size() % 2 == 0 ? "\r\n" : QByteArray(1, '\0'));
                return;
            }
            QVERIFY(driver.deliver("\n"));
            QVERIFY(driver.deliver("MODE TCP client"));
            QCOMPARE(driver.text("comboBox_mode"), QString("#2"));
            QVERIFY(driver.tickCommand());
            QVERIFY(driver.deliver("version 1"));
            QVERIFY(driver.deliver("version 2"));
            QCOMPARE(driver.text("lineEdit_version"), QString("2"));
            for (QMessageBox *box : driver.window.findChildren<QMessageBox *>())
                box->accept();
        };
        QVERIFY(driver.deliver("\r\n"));
        QTRY_COMPARE(driver.boxes.size(), mostBoxes);
        QTRY_VERIFY(!QApplication::activeModalWidget());
        QCOMPARE(driver.boxes.count(box::emptyDelivery), mostBoxes);
    }

    void closedPortStopsTheRead()
    {
        WindowDriver driver(Kind::RtuTcp);
        driver.prepare();
        driver.start("scan_parameters");
        QTimer *scan = driver.activeTimer();
        QVERIFY(QMetaObject::invokeMethod(&driver.window, "closeport"));
        scan->start();
        driver.tick();
        QVERIFY(!scan->isActive());
        QVERIFY(driver.debugLines.contains("error connecting"));
        QCOMPARE(driver.text("scan_parameters"), QString("Стоп сканирования"));
        driver.click("connect"); // still says disconnect, and makes everything good
        QCOMPARE(driver.state(), state::disconnected);
    }
};

QTEST_MAIN(TestRead)
#include "test_read.moc"
