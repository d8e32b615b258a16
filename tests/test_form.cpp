// The window before anything is connected: its form, its views and what the program is made of.

#include "window_driver.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCryptographicHash>
#include <QGridLayout>
#include <QMetaMethod>
#include <QResource>

class TestForm : public QObject {
    Q_OBJECT

private slots:
    void startsAsDesigned();
    void slotsStandInOrder();
    void focusFollowsCreation();
    void fieldsStandInTheirCells_data();
    void fieldsStandInTheirCells();
    void comboBoxesHoldTheirItems_data();
    void comboBoxesHoldTheirItems();
    void kindsShowTheirFields_data();
    void kindsShowTheirFields();
    void offClearsTheSlaveId();
};

void TestForm::startsAsDesigned()
{
    MainWindow window;
    QCOMPARE(window.windowTitle(), QString("Конфигуратор Modbus TCP-RTU"));

    const QByteArray sheet = window.styleSheet().toUtf8();
    QCOMPARE(sheet.size(), 1284);
    QCOMPARE(QCryptographicHash::hash(sheet, QCryptographicHash::Sha256).toHex().left(16),
             QByteArray("c0c2e8178fa5784a"));

    const QStringList disabled{"scan_parameters",     "applyButton",  "Reset",
                               "reset_allparameters", "lineEdit_MAC", "lineEdit_version"};
    const QList<QWidget *> widgets = window.centralWidget()->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        if (widget->objectName().startsWith("qt_") || widget->objectName().isEmpty())
            continue; // the toolkit's own
        QVERIFY2(!widget->isHidden(), qPrintable(widget->objectName()));
        QCOMPARE(widget->isEnabled(), !disabled.contains(widget->objectName()));
    }
    const auto timers = window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(timers.size(), 4);
    for (const QTimer *timer : timers)
        QVERIFY(!timer->isActive() && timer->interval() == 1000 && !timer->isSingleShot());

    // Stored as it is: the PNG inside stands behind a directory of four images.
    const QResource icon(":/images/KelvaneRTUTCP.ico");
    const QByteArray stored(reinterpret_cast<const char *>(icon.data()),
                            static_cast<int>(icon.size()));
    QCOMPARE(stored.left(6), QByteArray("\0\0\1\0\4\0", 6));
    QCOMPARE(stored.indexOf("\x89PNG"), 70);
    const QList<QSize> sizes = window.windowIcon().availableSizes();
    for (const int side : {256, 48, 32, 16})
        QVERIFY(sizes.contains(QSize(side, side)));
}

void TestForm::slotsStandInOrder()
{
    const QMetaObject &meta = MainWindow::staticMetaObject;
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
    QByteArrayList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        QVERIFY(meta.method(i).methodType() == QMetaMethod::Slot);
        QVERIFY(meta.method(i).access() == QMetaMethod::Private);
        names.append(meta.method(i).name());
    }
    QCOMPARE(
        names.join(' '),
        QByteArray("universal_show on_scanport_clicked on_applyButton_clicked on_Reset_clicked "
                   "on_scan_parameters_clicked readData openport closeport timerforScan "
                   "Reset_Default change_mode_TCP scan_pa_modbus_RTU_TCP "
                   "scan_pa_modbus_TCP_RTU scan_pa_modbus_all change_pa_modbus_RTU_TCP "
                   "change_pa_modbus_TCP_RTU change_parametersofmodbus "
                   "checkCustomDevicePathPolicy handleError on_reset_allparameters_clicked "
                   "on_checkBox_clicked on_connect_clicked styleclear OnSaveSetting_File "
                   "on_action_open_2_triggered on_action_show_triggered "
                   "on_action_save_triggered on_action_triggered"));
}

void TestForm::focusFollowsCreation()
{
    MainWindow window;
    QStringList names;
    for (QWidget *widget = window.nextInFocusChain(); widget != &window;
         widget = widget->nextInFocusChain()) {
        const bool takesFocus = widget->focusPolicy() & Qt::TabFocus;
        if (takesFocus && !widget->objectName().startsWith("qt_"))
            names.append(widget->objectName());
    }
    QCOMPARE(names.join(' '),
             QString("lineEdit_ip lineEdit_gateway lineEdit_MAC lineEdit_version comboBox_mode "
                     "comboBox lineEdit_mask comboBox_2 lineEdit_timewait comboBox_speed "
                     "lineEdit_portTCP checkBox lineEdit_timeout lineEdit_tcp_id "
                     "lineEdit_ipservertcp lineEdit_rtu_virtual_id applyButton "
                     "reset_allparameters Reset scanport scan_parameters conbox0 "
                     "serialPortInfoListBox connect"));
}

void TestForm::fieldsStandInTheirCells_data()
{
    QTest::addColumn<QString>("grid");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("label"); // in column 0, or empty
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("field");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("span");
    const struct {
        const char *grid;
        int row;
        const char *label, *text, *field;
        int column, span;
    } rows[] = {
        {"gridLayout", 0, "label_modeTcp", "Режим работы ", "comboBox_mode", 2, 2},
        {"gridLayout", 1, "label_version", "Версия", "lineEdit_version", 2, 2},
        {"gridLayout", 2, "label_24", "MAC", "lineEdit_MAC", 2, 2},
        {"gridLayout", 3, "label_21", "IP-адрес", "lineEdit_ip", 2, 2},
        {"gridLayout", 4, "label_22", "Маска подсети", "lineEdit_mask", 2, 2},
        {"gridLayout", 5, "label_23", "IP-адрес шлюза", "lineEdit_gateway", 2, 2},
        {"gridLayout", 8, "label_", "Порт TCP (502, 10000-65535)", "lineEdit_portTCP", 2, 2},
        {"gridLayout", 11, "label_28", "Паритет ", "comboBox", 2, 2},
        {"gridLayout", 12, "label_speed", "Скорость RS-485 бит/с", "comboBox_speed", 2, 2},
        {"gridLayout", 15, "label_27", "Количество стоп бит", "comboBox_2", 2, 2},
        {"gridLayout", 16, "label_timewait", "Таймаут  (100-60000) мс", "lineEdit_timewait", 2, 1},
        {"gridLayout_5", 0, "label_ipserver", "IP-адрес сервера TCP ", "lineEdit_ipservertcp", 1,
         2},
        {"gridLayout_5", 2, "label_timeout", "Таймаут TCP (5-240) с", "lineEdit_timeout", 1, 2},
        {"gridLayout_5", 3, "label_id_rtu", "Адрес в сети RTU (1-247)", "lineEdit_rtu_virtual_id",
         1, 2},
        {"gridLayout_5", 4, "label_idtcp", "Адрес сервера TCP (1-255)", "lineEdit_tcp_id", 1, 1},
        {"gridLayout_5", 4, "", "off", "checkBox", 2, 1},
        {"gridLayout_4", 5, "label_26", "Порт", "serialPortInfoListBox", 1, 1},
        {"gridLayout_4", 5, "", "Обновить", "scanport", 2, 1},
        {"gridLayout_4", 5, "", "Cоединиться", "connect", 4, 1},
        {"gridLayout_4", 7, "label_20", "Преобразователь протоколов", "conbox0", 1, 2},
        {"gridLayout_4", 7, "", "Сканировать", "scan_parameters", 4, 1},
    };
    for (const auto &row : rows)
        QTest::newRow(row.field) << row.grid << row.row << row.label << row.text << row.field
                                 << row.column << row.span;
}

void TestForm::fieldsStandInTheirCells()
{
    QFETCH(QString, grid);
    QFETCH(QString, label);
    QFETCH(QString, field);
    QFETCH(int, row);
    QFETCH(int, column);
    QFETCH(int, span);
    MainWindow window;
    auto *layout = window.findChild<QGridLayout *>(grid);
    const auto cellOf = [&](const QString &name) {
        int cell[4] = {-1, -1, -1, -1};
        const int index = layout->indexOf(window.findChild<QWidget *>(name));
        layout->getItemPosition(index, &cell[0], &cell[1], &cell[2], &cell[3]);
        return QVector<int>{cell[0], cell[1], cell[2], cell[3]};
    };
    QCOMPARE(cellOf(field), (QVector<int>{row, column, 1, span}));
    if (!label.isEmpty())
        QCOMPARE(cellOf(label), (QVector<int>{row, 0, 1, 1}));
    QTEST(window.findChild<QWidget *>(label.isEmpty() ? field : label)->property("text").toString(),
          "text");
}

void TestForm::comboBoxesHoldTheirItems_data()
{
    QTest::addColumn<QString>("items");
    QTest::newRow("conbox0") << "Modbus TCP-RTU |Modbus RTU-TCP|Modbus universal ";
    QTest::newRow("comboBox_mode") << "|Сервер TCP|Клиент TCP";
    QTest::newRow("comboBox") << "|без паритета|контроль нечетности|контроль четности";
    QTest::newRow("comboBox_2") << "|1|2";
    QTest::newRow("comboBox_speed")
        << "|1200|2400|4800|9600|19200|38400|57600|115200|128000|256000";
}

void TestForm::comboBoxesHoldTheirItems()
{
    MainWindow window;
    auto *combo = window.findChild<QComboBox *>(QTest::currentDataTag());
    QStringList items;
    for (int i = 0; i < combo->count(); ++i)
        items.append(combo->itemText(i));
    QTEST(items.join('|'), "items");
    QCOMPARE(combo->currentIndex(), 0);
}

void TestForm::kindsShowTheirFields_data()
{
    QTest::addColumn<QVector<int>>("kinds");
    QTest::newRow("each in turn") << QVector<int>{0, 1, 2};
    QTest::newRow("and back") << QVector<int>{2, 1, 0};
    QTest::newRow("0 and 2") << QVector<int>{2, 0, 2, 0};
    QTest::newRow("1 and 2") << QVector<int>{1, 2, 1};
}

void TestForm::kindsShowTheirFields()
{
    const QStringList universal{"label_modeTcp",       "comboBox_mode",   "label_version",
                                "lineEdit_version",    "label_timewait",  "lineEdit_timewait",
                                "reset_allparameters", "label_id_rtu",    "lineEdit_rtu_virtual_id",
                                "label_idtcp",         "lineEdit_tcp_id", "checkBox"};
    const QStringList client{"groupBox_client", "label_ipserver", "lineEdit_ipservertcp",
                             "label_timeout", "lineEdit_timeout"};
    const QStringList always{"label_24",   "lineEdit_MAC",   "lineEdit_ip", "comboBox",
                             "comboBox_2", "comboBox_speed", "applyButton", "Reset",
                             "connect",    "conbox0"};
    MainWindow window;
    window.setFixedSize(754, 550);
    window.show();
    QFETCH(QVector<int>, kinds);
    auto *kindBox = window.findChild<QComboBox *>("conbox0");
    kindBox->setCurrentIndex((kinds.first() + 1) % 3);
    for (const int kind : kinds) {
        kindBox->setCurrentIndex(kind);
        QCOMPARE(window.size(), QSize(750, kind == 2 ? 550 : 450));
        const auto isVisible = [&](const QString &name) {
            return window.findChild<QWidget *>(name)->isVisible();
        };
        for (const QString &name : universal)
            QVERIFY2(isVisible(name) == (kind == 2), qPrintable(name));
        for (const QString &name : client)
            QVERIFY2(isVisible(name) == (kind > 0), qPrintable(name));
        for (const QString &name : always)
            QVERIFY2(isVisible(name), qPrintable(name));
    }
}

void TestForm::offClearsTheSlaveId()
{
    WindowDriver driver;
    driver.enter("lineEdit_tcp_id", "17");
    driver.click("checkBox");
    QVERIFY(!driver.isEnabled("lineEdit_tcp_id"));
    QCOMPARE(driver.mark("lineEdit_tcp_id"), QString(lilac));
    QCOMPARE(driver.text("lineEdit_tcp_id"), QString());
    driver.click("checkBox");
    QVERIFY(driver.isEnabled("lineEdit_tcp_id"));
    QCOMPARE(driver.mark("lineEdit_tcp_id"), QString());
    QCOMPARE(driver.text("lineEdit_tcp_id"), QString());
}

QTEST_MAIN(TestForm)
#include "test_form.moc"
