// Settings files, through the menu and the file dialogs.

#include "setting_module.h"
#include "window_fixture.h"

#include <QDir>
#include <QSettings>

#include <csignal>
#include <memory>

#include <sys/resource.h>
#include <sys/stat.h>

static void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// Lets each write fail, as on a full disk, where a file would become larger than this.
static void limitFiles(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, RLIM_INFINITY};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
        qFatal("cannot limit the size of files");
}

class TestFiles : public QObject {
    Q_OBJECT

    const QByteArray defaults = contentOf(TEST_DATA "defaults.TRset");
    const QByteArray nondefaults = contentOf(TEST_DATA "nondefaults.TRset");

    std::unique_ptr<QTemporaryDir> folder; // also the current folder, so that stray files show
    std::unique_ptr<WindowFixture> fixture;
    QString path; // a file in the folder

    static QStringList files()
    {
        return QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                | QDir::NoDotAndDotDot);
    }

    /// The kind and the fields that are not empty, in the format of files.txt.
    QString form()
    {
        QStringList values{fixture->text("conbox0")};
        for (const QString &field : fixture->filled())
            values.append(field + '=' + fixture->text(field));
        if (fixture->text("checkBox") == "checked")
            values.append("off");
        return values.join('|');
    }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QDir::setCurrent(folder->path());
        path = folder->filePath("site.TRset");
        fixture.reset();
        fixture = std::make_unique<WindowFixture>(Kind::TcpRtu);
    }

    /// The first test, because only the first dialog of a program begins in the current folder.
    void dialogsBeginInTheCurrentFolder()
    {
        for (const char *action : {"action_save", "action_open_2"}) {
            fixture->trigger(action);
            COMPARE(fixture->fileDialogs.last(),
                    "Настройки: TCP_RTU settings (*.TRset) Все файлы (*): " + QDir::currentPath());
        }
    }

    void savesTheForm()
    {
        for (const char *temporaryFiles : {"/proc", "/proc", "/tmp"}) { // a new file, then over it
            qputenv("TMPDIR", temporaryFiles);
            fixture->trigger("action_save", path);
            qunsetenv("TMPDIR");
            QCOMPARE(contentOf(path), defaults);
        }
        QCOMPARE(files(), QStringList{"site.TRset"});

        const QByteArray room = "\n[Site]\nRoom=\"a, b\", @ByteArray(5)\n";
        put(path, "[General]\nMASK=1\nOwner=@Valerie\n" + room); // with unknown keys
        fixture->click("checkBox");
        fixture->enter("lineEdit_tcp_id", "17"); // "off" takes precedence
        fixture->trigger("action_save", path);
        QCOMPARE(contentOf(path),
                 QByteArray(defaults).replace("PARITY=1", "Owner=@@Valerie\nPARITY=1") + room);
        put(path, "Rooms=1, й😀\n[]\nMASK=2");
        fixture->trigger("action_save", path);
        QCOMPARE(QSettings(path, QSettings::IniFormat).value("Rooms").toStringList(),
                 (QStringList{"1", "й😀"}));
    }

    void loadsAFile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QByteArray>("expected");
        for (const QByteArrayList &row : tableOf("files.txt")) {
            const QByteArray content =
                row[0].endsWith(".TRset") ? contentOf(TEST_DATA + row[0]) : row[0];
            QTest::newRow(row[0]) << content << row.mid(1).join('|');
        }
        QTest::newRow("Latin-1") << QByteArray("IP_ADRESS=\xe9.")
                                 << "Modbus TCP-RTU |lineEdit_ip="
                + QByteArray(QT_VERSION < QT_VERSION_CHECK(6, 0, 0) ? "é." : "\xef\xbf\xbd.");
        QTest::newRow("4 MiB") << QByteArray("IP_ADRESS=1").leftJustified(1 << 22, '\n')
                               << QByteArray("Modbus TCP-RTU |lineEdit_ip=1");
    }

    void loadsAFile()
    {
        QFETCH(QByteArray, content);
        QFETCH(QByteArray, expected);
        fixture->markAll();
        for (const QByteArray &file : {nondefaults, defaults, content}) {
            put(path, file);
            fixture->trigger("action_open_2", path);
        }
        COMPARE(form().toUtf8().split('|'), expected.split('|'));
        const bool off = form().endsWith("|off");
        QCOMPARE(fixture->isEnabled("lineEdit_tcp_id"), !off);
        QStringList green = fieldsOf(Kind::Universal);
        for (const char *field : {"lineEdit_version", "lineEdit_MAC", "lineEdit_tcp_id"})
            green.removeAll(field);
        COMPARE(fixture->marked("green"), green);
        COMPARE(fixture->marked("lilac"), QStringList{"lineEdit_version"});
        COMPARE(fixture->marked("lilac from file").join(' '),
                off ? "lineEdit_MAC lineEdit_tcp_id" : "lineEdit_MAC");
        const QString address = fixture->text("lineEdit_ip"); // whatever it is, it survives a save
        fixture->trigger("action_save", path);
        fixture->trigger("action_open_2", path);
        QCOMPARE(fixture->text("lineEdit_ip"), address.isEmpty() ? "192.168.0.1" : address);
        QVERIFY(fixture->boxes.isEmpty());
    }

    void remembersTheChosenFile()
    {
        fixture->trigger("action"); // no file chosen yet
        COMPARE(fixture->boxes, QStringList{fixture->known("no file")});
        put(path, nondefaults);
        fixture->trigger("action_open_2", path);
        QCOMPARE(fixture->text("action"), "Текущий файл (" + path + ")");
        fixture->trigger("action_save", folder->filePath("copy.TRset")); // not the current file
        QCOMPARE(contentOf("copy.TRset"), nondefaults);

        put(path, QByteArray(nondefaults).replace("10.0.0.7", "10.0.0.8"));
        fixture->trigger("action");
        QCOMPARE(fixture->text("lineEdit_ip"), QString("10.0.0.8"));
        QFile::remove(path);
        fixture->trigger("action");
        QCOMPARE(form(), QString("Modbus universal "));

        fixture->enter("lineEdit_ip", "1.2.3.4");
        fixture->trigger("action_open_2"); // cancelled: the current file is reset
        QCOMPARE(fixture->text("action"), QString("Текущий файл ()"));
        fixture->trigger("action");
        fixture->trigger("action_save"); // cancelled
        const QString noFile = fixture->known("no file");
        COMPARE(fixture->boxes, (QStringList{noFile, noFile, noFile}));
        QCOMPARE(fixture->text("lineEdit_ip"), QString("1.2.3.4"));
        QCOMPARE(files(), QStringList{"copy.TRset"});
    }

    void leavesUnwritableTargetsAlone()
    {
        QVERIFY(mkfifo("pipe", 0600) == 0 && QDir().mkdir("folder"));
        put("huge", nondefaults + QByteArray(1 << 22, '\n'));
        const QStringList before = files();
        setting_module store;
        for (const char *target : {"", "pipe", "huge", "folder"}) {
            store.SaveNTSetting(target);
            store.LoadNTSetting(target);
            QCOMPARE(store.moduleName, QString());
        }
        QCOMPARE(files(), before);
        QVERIFY(contentOf("huge").size() > 1 << 22);
    }

    void failedSaveLeavesNothingBehind()
    {
        const QByteArray changed = QByteArray(nondefaults).replace("10.0.0.7", "10.0.0.8");
        put(path, nondefaults);
        fixture->trigger("action_open_2", path);
        fixture->enter("lineEdit_ip", QString(32767, '1'));
        setting_module store;
        for (const rlim_t bytes : {20000U, 0U}) {
            limitFiles(bytes);
            fixture->trigger("action_save", path);
            store.LoadNTSetting(path);
            limitFiles(RLIM_INFINITY);
            QCOMPARE(contentOf(path), nondefaults);
        }
        QCOMPARE(store.ipAddress, QString("10.0.0.7"));
        QCOMPARE(files(), QStringList{"site.TRset"});
        fixture->trigger("action");
        QCOMPARE(fixture->text("lineEdit_ip"), QString("10.0.0.7"));
        put(path, changed);
        fixture->trigger("action");
        QCOMPARE(fixture->text("lineEdit_ip"), QString("10.0.0.8"));
        QCOMPARE(contentOf(path), changed);
    }

    void savesThroughSymlinksAndKeepsTheMode()
    {
        put("real.TRset", "");
        QVERIFY(chmod("real.TRset", 0604) == 0);
        QVERIFY(QFile::link("real.TRset", "link.TRset") && QFile::link("link.TRset", path));
        QVERIFY(QDir().mkdir("real.TRset.lock") && QDir().mkdir("site.TRset.lock"));
        fixture->trigger("action_save", path);
        QCOMPARE(contentOf("real.TRset"), defaults);
        struct stat real;
        QVERIFY(stat("real.TRset", &real) == 0);
        QCOMPARE(real.st_mode & 0777U, 0604U);
        QVERIFY(QFileInfo(path).isSymLink() && QFileInfo("link.TRset").isSymLink());
    }

    void rejectsSerializedObjects()
    {
        for (const QByteArrayList &row : tableOf("serialized_objects.txt")) {
            const QByteArray content =
                QByteArray(row[0]).replace("(5)", "(\\0\\0\\0\\x2\\0\\0\\0\\x5)");
            put(path, content);
            fixture->enter("lineEdit_ip", "1.2.3.4");
            fixture->trigger("action_save", path);
            QCOMPARE(contentOf(path), content);
            fixture->trigger("action_open_2", path);
            QCOMPARE(fixture->text("lineEdit_ip"), QString());
        }
        put(path, nondefaults);
        fixture->enter("lineEdit_ip", ",@Variant(5)"); // would make such a file
        fixture->trigger("action_save", path);
        QCOMPARE(contentOf(path), nondefaults);
    }

    void storeAsksForItsFile()
    {
        fixture->trigger("action_save", path); // also the answer to the dialogs below
        setting_module store;
        store.moduleName = "Modbus universal ";
        QVERIFY(QMetaObject::invokeMethod(&store, "SaveNTSetting"));
        setting_module other;
        QVERIFY(QMetaObject::invokeMethod(&other, "LoadNTSetting"));
        QCOMPARE(other.moduleName, store.moduleName);
        QVERIFY(QMetaObject::invokeMethod(&other, "LoadNTSetting", Q_ARG(QString, "")));
        QCOMPARE(other.moduleName, QString());
        QCOMPARE(other.fileName, path);
        other.SaveNTSetting("new/folder/site.TRset");
        QVERIFY(QFile::exists("new/folder/site.TRset"));
    }
};

WINDOW_TEST_MAIN(TestFiles)
#include "test_files.moc"
