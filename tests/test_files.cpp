// Settings files, through the menu and the file dialogs.

#include "setting_module.h"
#include "window_driver.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>

#include <sys/stat.h>

namespace {

const char example[] = "[General]\n"
                       "GATEWAY=0.0.0.0\n"
                       "IP_ADRESS=192.168.0.1\n"
                       "MASK=255.255.255.0\n"
                       "MODE_TCP=1\n"
                       "PARITY=1\n"
                       "PORT_TCP=502\n"
                       "SPEED_RS485=4\n"
                       "STOP_BIT=1\n"
                       "TIMEOUT_RESPONSE=1000\n"
                       "\n"
                       "[Client_TCP]\n"
                       "IP_SERVER_TCP=192.168.0.10\n"
                       "RTU_VIRTUAL_ID=1\n"
                       "TCP_SLAVE_ID=off\n"
                       "TIMEOUT_TCP=180\n"
                       "\n"
                       "[MODUL]\n"
                       "Name=\"Modbus TCP-RTU \"\n";

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(none)");
}

void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// Answers the next file dialog as a user would: with a path, or by cancelling.
class DialogAnswer : public QObject {
public:
    explicit DialogAnswer(const QString &answer)
        : path(answer)
    {
        QObject::connect(&timer, &QTimer::timeout, this, &DialogAnswer::look);
        timer.start(5);
    }
    QString caption;
    QStringList filters;

private:
    void look()
    {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        timer.stop();
        caption = dialog->windowTitle();
        filters = dialog->nameFilters();
        if (path.isEmpty()) {
            dialog->reject();
            return;
        }
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
        const bool saving = dialog->acceptMode() == QFileDialog::AcceptSave;
        dialog->findChild<QDialogButtonBox *>("buttonBox")
            ->button(saving ? QDialogButtonBox::Save : QDialogButtonBox::Open)
            ->click();
    }

    QString path;
    QTimer timer;
};

/// The window and a folder of its own, which is the current one too: nothing may land there.
class FilesDriver : public WindowDriver {
public:
    FilesDriver()
        : WindowDriver(Kind::TcpRtu)
    {
        folder.setAutoRemove(true);
        QDir::setCurrent(folder.path());
        boxes.handle = [](QMessageBox *box) {
            box->button(box->standardButtons() & QMessageBox::Yes ? QMessageBox::Yes
                                                                  : QMessageBox::Ok)
                ->click();
        };
    }
    ~FilesDriver() { QDir::setCurrent("/"); }

    QString path(const QString &name = "site.TRset") const { return folder.filePath(name); }
    void trigger(const QString &action) { find<QAction>(action)->trigger(); }
    void choose(const QString &answer)
    {
        DialogAnswer dialog(answer);
        trigger("action_open_2");
    }
    void save(const QString &answer)
    {
        DialogAnswer dialog(answer);
        trigger("action_save");
    }
    QStringList files() const
    {
        return QDir(folder.path())
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    /// The fields that a file fills, in its order, with blanks between.
    QString form()
    {
        QStringList values;
        for (const char *name : {"conbox0", "lineEdit_ip", "lineEdit_mask", "lineEdit_gateway",
                                 "lineEdit_portTCP", "comboBox_speed", "comboBox_2", "comboBox",
                                 "comboBox_mode", "lineEdit_timewait", "lineEdit_ipservertcp",
                                 "lineEdit_timeout", "lineEdit_rtu_virtual_id", "lineEdit_tcp_id"})
            values.append(text(name));
        values.append(find<QCheckBox>("checkBox")->isChecked() ? "off" : "on");
        return values.join(' ');
    }

    QTemporaryDir folder;
};

const char blankForm[] = "#0     #0 #0 #0 #0      on";

} // namespace

class TestFiles : public QObject {
    Q_OBJECT

private slots:
    void savesTheForm_data();
    void savesTheForm();
    void keepsForeignKeys();
    void loadsAFile_data();
    void loadsAFile();
    void tracesWhatItLoads();
    void cancelledDialogs();
    void currentFileIsReadAnew();
    void unwritableTargetsAreLeftAlone();
    void loadsUnderARunningRead();
    void storeAsksForItsFile();
};

void TestFiles::savesTheForm_data()
{
    QTest::addColumn<QString>("entries"); // widget=text, a line each
    QTest::addColumn<QByteArray>("from");
    QTest::addColumn<QByteArray>("to");
    const auto add = [](const char *tag, const char *entries, const char *from, const char *to) {
        QTest::newRow(tag) << entries << QByteArray(from) << QByteArray(to);
    };
    add("blank form", "", "", "");
    add("text", "lineEdit_ip=10.0.0.7", "IP_ADRESS=192.168.0.1", "IP_ADRESS=10.0.0.7");
    add("blanks", "lineEdit_mask= ", "MASK=255.255.255.0", "MASK=\" \"");
    add("parity", "comboBox=#3", "PARITY=1", "PARITY=3");
    add("first speed", "comboBox_speed=#1", "SPEED_RS485=4", "SPEED_RS485=1");
    add("stop bits", "comboBox_2=#2", "STOP_BIT=1", "STOP_BIT=2");
    add("mode", "comboBox_mode=#2", "MODE_TCP=1", "MODE_TCP=2");
    add("kind", "conbox0=#1", "Name=\"Modbus TCP-RTU \"", "Name=Modbus RTU-TCP");
    add("universal", "conbox0=#2", "Modbus TCP-RTU ", "Modbus universal ");
    add("slave id", "lineEdit_tcp_id=17", "TCP_SLAVE_ID=off", "TCP_SLAVE_ID=17");
    add("time-outs", "lineEdit_timeout=5\nlineEdit_timewait=100", "TIMEOUT_TCP=180",
        "TIMEOUT_TCP=5");
}

void TestFiles::savesTheForm()
{
    QFETCH(QString, entries);
    QFETCH(QByteArray, from);
    QFETCH(QByteArray, to);
    FilesDriver driver;
    const QStringList lines = entries.isEmpty() ? QStringList() : entries.split('\n');
    for (const QString &line : lines)
        driver.enter(line.section('=', 0, 0), line.section('=', 1));
    driver.save(driver.path());
    QByteArray expected = QByteArray(example).replace(from, to);
    if (entries.contains("timewait"))
        expected.replace("RESPONSE=1000", "RESPONSE=100");
    QCOMPARE(contentOf(driver.path()), expected);
    driver.save(driver.path()); // over itself
    QCOMPARE(contentOf(driver.path()), expected);
    QCOMPARE(driver.files(), QStringList{"site.TRset"});
    QCOMPARE(driver.find<QAction>("action")->text(), QString("Текущий файл"));
}

void TestFiles::keepsForeignKeys()
{
    FilesDriver driver;
    put(driver.path(), "[General]\nMASK=1\nOwner=me\n\n[Site]\nRoom=12\n");
    driver.enter("lineEdit_tcp_id", "17");
    driver.click("checkBox");
    driver.save(driver.path());
    QCOMPARE(contentOf(driver.path()),
             QByteArray(example).replace("PARITY=1", "Owner=me\nPARITY=1") + "\n[Site]\nRoom=12\n");
}

void TestFiles::loadsAFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("form");
    const auto add = [](const char *tag, const QByteArray &content, const char *form) {
        QTest::newRow(tag) << content << form;
    };
    add("example", example,
        "#0 192.168.0.1 255.255.255.0 0.0.0.0 502 #4 #1 #1 #1 1000 192.168.0.10 180 1  off");
    add("no file", "", blankForm);
    add("only the kind", "[MODUL]\nName=Modbus RTU-TCP\n", "#1     #0 #0 #0 #0      on");
    add("universal", "[MODUL]\nName=\"Modbus universal \"\n", "#2     #0 #0 #0 #0      on");
    add("kind without its blank", "[MODUL]\nName=Modbus universal\n", blankForm);
    add("slave id", "[Client_TCP]\nTCP_SLAVE_ID=17\n", "#0     #0 #0 #0 #0     17 on");
    add("slave id OFF", "[Client_TCP]\nTCP_SLAVE_ID=OFF\n", "#0     #0 #0 #0 #0     OFF on");
    add("words for numbers", "PARITY=odd\nSTOP_BIT=1.5\nMODE_TCP=\nSPEED_RS485=2\n",
        "#0     #2 #0 #0 #0      on");
    add("index out of range", "[General]\nPARITY=99\nSPEED_RS485=-5\n",
        "#0     #-1 #0 #-1 #0      on");
    add("small letters", "[general]\nip_adress=1.2.3.4\n", blankForm);
    add("half written", "[General]\nIP_ADRESS=1.2.3.4\nMASK=\"255.2",
        "#0 1.2.3.4 255.2   #0 #0 #0 #0      on");
    add("binary",
        QByteArray("\x7f"
                   "ELF\0\1\2[General]\0=\xff\n]",
                   20)
            + QByteArray(5000, '\xa5'),
        blankForm);
    add("huge", QByteArray(example) + QByteArray(20 << 20, '\n'), blankForm);
}

void TestFiles::loadsAFile()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, form);
    FilesDriver driver;
    if (!content.isEmpty())
        put(driver.path(), content);
    if (content.isEmpty()) { // gone since it was chosen
        put(driver.path(), example);
        driver.choose(driver.path());
        QFile::remove(driver.path());
        driver.trigger("action");
    } else {
        driver.choose(driver.path());
    }
    QCOMPARE(driver.form(), form);
    const bool off = form.endsWith("off");
    QCOMPARE(driver.isEnabled("lineEdit_tcp_id"), !off);
    QCOMPARE(driver.mark("lineEdit_tcp_id"), QString(off ? "background-color: #f5edff;" : ""));
    QCOMPARE(driver.mark("lineEdit_MAC"), QString("background-color: #f5edff;"));
    QCOMPARE(driver.mark("lineEdit_version"), QString("background-color:  #f5edff;"));
    if (driver.text("conbox0") != "#0") // the view follows
        QCOMPARE(driver.window.height(), driver.text("conbox0") == "#2" ? 550 : 450);
    QCOMPARE(driver.find<QAction>("action")->text(), "Текущий файл (" + driver.path() + ")");
    QVERIFY(driver.boxes.seen.isEmpty());
}

void TestFiles::tracesWhatItLoads()
{
    FilesDriver driver;
    put(driver.path(), example);
    driver.choose(driver.path());
    const QString name = "\"Modbus TCP-RTU \" modul_name";
    QCOMPARE(driver.debugLines, (QStringList{name, "4 SPERD_RS485", "1 tcp -mode"}));
    driver.debugLines.clear();
    driver.trigger("action");
    QCOMPARE(driver.debugLines, QStringList{name});
}

void TestFiles::cancelledDialogs()
{
    FilesDriver driver;
    const QString nothingChosen = "Ошибка: Файл конфигурации не выбран";
    driver.enter("lineEdit_ip", "1.2.3.4");
    driver.trigger("action");
    QCOMPARE(driver.boxes.seen, QStringList{nothingChosen});
    put(driver.path(), example);
    driver.choose(driver.path());
    driver.enter("lineEdit_ip", "1.2.3.4");
    driver.choose("");
    QCOMPARE(driver.find<QAction>("action")->text(), QString("Текущий файл ()"));
    driver.trigger("action");
    QCOMPARE(driver.boxes.seen.count(nothingChosen), 3);
    driver.save("");
    QCOMPARE(driver.boxes.seen.size(), 3);
    QCOMPARE(driver.text("lineEdit_ip"), QString("1.2.3.4"));
    QCOMPARE(driver.files(), QStringList{"site.TRset"});
}

void TestFiles::currentFileIsReadAnew()
{
    FilesDriver driver;
    put(driver.path(), example);
    driver.choose(driver.path());
    put(driver.path(), QByteArray(example).replace("192.168.0.1\n", "192.168.0.2\n"));
    driver.trigger("action");
    QCOMPARE(driver.text("lineEdit_ip"), QString("192.168.0.2"));
}

void TestFiles::unwritableTargetsAreLeftAlone()
{
    FilesDriver driver;
    const QString pipe = driver.path("pipe");
    QVERIFY(mkfifo(QFile::encodeName(pipe), 0600) == 0);
    put(driver.path("huge"), QByteArray(2 << 20, 'x'));
    QVERIFY(QDir(driver.folder.path()).mkdir("folder"));
    const QStringList before = driver.files();
    setting_module store;
    for (const QString &target :
         {QString(), pipe, driver.path("huge"), driver.path("folder"), QString("/dev/full")}) {
        store.SaveNTSetting(target);
        store.LoadNTSetting(target);
        QCOMPARE(store.ipAddress, QString());
    }
    QCOMPARE(driver.files(), before);
    QCOMPARE(contentOf(driver.path("huge")).size(), 2 << 20);
}

void TestFiles::loadsUnderARunningRead()
{
    FilesDriver driver;
    put(driver.path(), QByteArray(example).replace("TCP-RTU ", "universal "));
    driver.connectPort();
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickAndReply());
    driver.choose(driver.path());
    QCOMPARE(driver.text("conbox0"), QString("#2"));
    QVERIFY(driver.activeTimer());
    driver.tick(); // sends nothing for this kind any more, until the user stops it
    driver.click("scan_parameters");
    QVERIFY(!driver.activeTimer());
    driver.click("scan_parameters");
    driver.slowDown();
    QVERIFY(driver.tickCommand());
    QCOMPARE(driver.commands, (QByteArrayList{"MAC", "MODE TCP"}));
}

void TestFiles::storeAsksForItsFile()
{
    FilesDriver driver;
    setting_module store;
    store.ipAddress = "1.2.3.4";
    store.moduleName = "Modbus universal ";
    {
        DialogAnswer dialog(driver.path());
        QVERIFY(QMetaObject::invokeMethod(&store, "SaveNTSetting"));
        QCOMPARE(dialog.caption, QString("Настройки"));
        QCOMPARE(dialog.filters, QStringList{"TCP_RTU settings (*.TRset);"});
    }
    setting_module other;
    {
        DialogAnswer dialog(driver.path());
        QVERIFY(QMetaObject::invokeMethod(&other, "LoadNTSetting"));
        QCOMPARE(dialog.caption, QString("Настройки"));
    }
    QCOMPARE(other.fileName, driver.path());
    QCOMPARE(other.moduleName, QString("Modbus universal "));
    QVERIFY(QMetaObject::invokeMethod(&other, "LoadNTSetting", Q_ARG(QString, "")));
    QCOMPARE(other.ipAddress, QString());
    QCOMPARE(other.fileName, driver.path());
}

QTEST_MAIN(TestFiles)
#include "test_files.moc"
