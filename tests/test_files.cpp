// Settings files, through the menu and the file dialogs.

#include "setting_module.h"
#include "window_fixture.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QListView>
#include <QSettings>

#include <memory>

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

static void put(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

/// Makes the folder read-only, or writable again. Modes restrict root only without this capability.
static void protect(const QByteArray &folder, bool on)
{
    __user_cap_header_struct process{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3];
    syscall(SYS_capget, &process, sets);
    __user_cap_data_struct &set = sets[CAP_TO_INDEX(CAP_DAC_OVERRIDE)];
    const __u32 bit = CAP_TO_MASK(CAP_DAC_OVERRIDE);
    set.effective = on ? set.effective & ~bit : set.effective | (set.permitted & bit);
    if (syscall(SYS_capset, &process, sets) != 0 || chmod(folder, on ? 0555 : 0700) != 0)
        qFatal("cannot protect %s", folder.constData());
}

class TestFiles : public QObject {
    Q_OBJECT

    const QByteArray defaults = contentOf(TEST_DATA "defaults.TRset");
    const QByteArray others = contentOf(TEST_DATA "nondefaults.TRset");

    std::unique_ptr<QTemporaryDir> folder; // also the current folder, so that stray files show
    std::unique_ptr<WindowFixture> user;
    QString site; // a file in the folder

    static QStringList files()
    {
        return QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                | QDir::NoDotAndDotDot);
    }

    /// The kind and the fields that are not empty, in the format of files.txt.
    QString form()
    {
        QStringList values{user->text("conbox0")};
        for (const QString &field : user->filled())
            values.append(field + '=' + user->text(field));
        if (user->text("checkBox") == "checked")
            values.append("off");
        return values.join('|');
    }

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QDir::setCurrent(folder->path());
        site = folder->filePath("site.TRset");
        user.reset();
        user = std::make_unique<WindowFixture>(Kind::TcpRtu);
    }

    /// The first test, because only the first dialog of a program begins in the current folder.
    void dialogsListSettingsFiles()
    {
        put(site, others);
        put("settingsFolder.txt", "");
        const QStringList expected{"site.TRset", "settingsFolder.txt site.TRset"};
        QStringList seen;
        const auto look = [&] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            auto *list = dialog->findChild<QListView *>("listView");
            const auto isListed = [&] { // later, because a thread lists the files
                QStringList names;
                for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row)
                    names += list->model()->index(row, 0, list->rootIndex()).data().toString();
                return names.join(' ') == expected[seen.size() % 2];
            };
            for (const QString &filter : dialog->nameFilters()) {
                dialog->selectNameFilter(filter);
                seen += user->waitUntil(isListed, 5000) ? expected[seen.size() % 2] : "others";
            }
            user->leavesDialogsOpen = false;
            dialog->reject();
        };
        for (const char *action : {"action_save", "action_open_2"}) {
            user->leavesDialogsOpen = true;
            QTimer::singleShot(0, look);
            user->trigger(action);
            COMPARE(user->fileDialogs.last(),
                    "Настройки: TCP_RTU settings (*.TRset) Все файлы (*): " + QDir::currentPath());
        }
        COMPARE(seen, expected + expected);
    }

    void savesTheForm()
    {
        for (const char *temporaryFiles : {"/proc", "/proc", "/tmp"}) { // a new file, then over it
            qputenv("TMPDIR", temporaryFiles);
            user->trigger("action_save", site);
            qunsetenv("TMPDIR");
            QCOMPARE(contentOf(site), defaults);
        }
        QCOMPARE(files(), QStringList{"site.TRset"});

        const QByteArray room = "\n[Site]\nRoom=\"a, b\", @ByteArray(5)\n";
        put(site, "[General]\nMASK=1\nOwner=@Valerie\n" + room); // with unknown keys
        user->click("checkBox");
        user->enter("lineEdit_tcp_id", "17"); // "off" takes precedence
        user->trigger("action_save", site);
        QCOMPARE(contentOf(site),
                 QByteArray(defaults).replace("PARITY=1", "Owner=@@Valerie\nPARITY=1") + room);
        put(site, "Rooms=1, й😀");
        user->trigger("action_save", site);
        QCOMPARE(QSettings(site, QSettings::IniFormat).value("Rooms").toStringList(),
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
        user->markAll();
        for (const QByteArray &file : {others, defaults, content}) {
            put(site, file);
            user->trigger("action_open_2", site);
        }
        COMPARE(form().toUtf8().split('|'), expected.split('|'));
        const bool off = form().endsWith("|off");
        QCOMPARE(user->isEnabled("lineEdit_tcp_id"), !off);
        QStringList green = fieldsOf(Kind::Universal);
        for (const char *field : {"lineEdit_version", "lineEdit_MAC", "lineEdit_tcp_id"})
            green.removeAll(field);
        COMPARE(user->marked("green"), green);
        COMPARE(user->marked("lilac"), QStringList{"lineEdit_version"});
        COMPARE(user->marked("lilac from file").join(' '),
                off ? "lineEdit_MAC lineEdit_tcp_id" : "lineEdit_MAC");
        const QString address = user->text("lineEdit_ip"); // whatever it is, it survives a save
        user->trigger("action_save", site);
        user->trigger("action_open_2", site);
        QCOMPARE(user->text("lineEdit_ip"), address.isEmpty() ? "192.168.0.1" : address);
        QVERIFY(user->boxes.isEmpty());
    }

    void remembersTheChosenFile()
    {
        user->trigger("action"); // no file chosen yet
        COMPARE(user->boxes, QStringList{user->known("no file")});
        put(site, others);
        user->trigger("action_open_2", site);
        QCOMPARE(user->text("action"), "Текущий файл (" + site + ")");
        user->trigger("action_save",
                      folder->filePath("copy.TRset")); // does not change the current file
        QCOMPARE(contentOf("copy.TRset"), others);

        put(site, QByteArray(others).replace("10.0.0.7", "10.0.0.8"));
        user->trigger("action");
        QCOMPARE(user->text("lineEdit_ip"), QString("10.0.0.8"));
        QFile::remove(site);
        user->trigger("action");
        QCOMPARE(form(), QString("Modbus universal "));

        user->enter("lineEdit_ip", "1.2.3.4");
        user->trigger("action_open_2"); // cancelled: the current file is reset
        QCOMPARE(user->text("action"), QString("Текущий файл ()"));
        user->trigger("action");
        user->trigger("action_save"); // cancelled
        QCOMPARE(user->boxes.count(user->known("no file")), 3);
        QCOMPARE(user->boxes.size(), 3);
        QCOMPARE(user->text("lineEdit_ip"), QString("1.2.3.4"));
        QCOMPARE(files(), QStringList{"copy.TRset"});
    }

    void leavesUnwritableTargetsAlone()
    {
        QVERIFY(mkfifo("pipe", 0600) == 0 && QDir().mkdir("folder"));
        put("huge", others + QByteArray(1 << 22, '\n'));
        const QStringList before = files();
        setting_module store;
        for (const char *target : {"", "pipe", "huge", "folder"}) {
            store.SaveNTSetting(target);
            QVERIFY(store.settings);
            store.LoadNTSetting(target);
            QVERIFY(store.settings);
            QCOMPARE(store.moduleName, QString());
        }
        QCOMPARE(files(), before);
        QVERIFY(contentOf("huge").size() > 1 << 22);
    }

    void failedSaveLeavesNothingBehind()
    {
        const auto othersWith = [this](const char *address) {
            return QByteArray(others).replace("10.0.0.7", address);
        };
        put(site, others);
        user->trigger("action_open_2", site);
        user->enter("lineEdit_ip", "1.2.3.4");
        protect(folder->path().toUtf8(), true);
        user->trigger("action_save", site);
        qputenv("TMPDIR", folder->path().toUtf8()); // the copy cannot be written
        setting_module store;
        store.LoadNTSetting(site);
        qunsetenv("TMPDIR");
        protect(folder->path().toUtf8(), false);
        QCOMPARE(store.ipAddress, QString("10.0.0.7"));
        QCOMPARE(contentOf(site), others);
        QCOMPARE(files(), QStringList{"site.TRset"});
        user->trigger("action");
        QCOMPARE(user->text("lineEdit_ip"), QString("10.0.0.7"));
        put(site, othersWith("10.0.0.8"));
        user->trigger("action");
        QCOMPARE(user->text("lineEdit_ip"), QString("10.0.0.8"));
        QCOMPARE(contentOf(site), othersWith("10.0.0.8"));
        user->enter("lineEdit_ip", "10.0.0.9");
        user->trigger("action_save", site);
        QCOMPARE(contentOf(site), othersWith("10.0.0.9"));
    }

    void savesThroughSymlinksAndKeepsTheMode()
    {
        put("real.TRset", "");
        QVERIFY(chmod("real.TRset", 0604) == 0);
        QVERIFY(QFile::link("real.TRset", "link.TRset") && QFile::link("link.TRset", site));
        QVERIFY(QDir().mkdir("real.TRset.lock") && QDir().mkdir("site.TRset.lock"));
        user->trigger("action_save", site);
        QCOMPARE(contentOf("real.TRset"), defaults);
        struct stat real;
        QVERIFY(stat("real.TRset", &real) == 0);
        QCOMPARE(real.st_mode & 0777U, 0604U);
        QVERIFY(QFileInfo(site).isSymLink() && QFileInfo("link.TRset").isSymLink());
    }

    void rejectsSerializedObjects()
    {
        for (const QByteArrayList &row : tableOf("serialized_objects.txt")) {
            const QByteArray content =
                QByteArray(row[0]).replace("(5)", "(\\0\\0\\0\\x2\\0\\0\\0\\x5)");
            put(site, content);
            user->enter("lineEdit_ip", "1.2.3.4");
            user->trigger("action_save", site);
            QCOMPARE(contentOf(site), content);
            user->trigger("action_open_2", site);
            QCOMPARE(user->text("lineEdit_ip"), QString());
        }
        put(site, others);
        user->enter("lineEdit_ip", ",@Variant(5)"); // would make such a file
        user->trigger("action_save", site);
        QCOMPARE(contentOf(site), others);
    }

    void storeAsksForItsFile()
    {
        user->trigger("action_save", site); // also the answer to the dialogs below
        setting_module store;
        store.moduleName = "Modbus universal ";
        QVERIFY(QMetaObject::invokeMethod(&store, "SaveNTSetting"));
        setting_module other;
        QVERIFY(QMetaObject::invokeMethod(&other, "LoadNTSetting"));
        QCOMPARE(other.moduleName, store.moduleName);
        QVERIFY(QMetaObject::invokeMethod(&other, "LoadNTSetting", Q_ARG(QString, "")));
        QCOMPARE(other.moduleName, QString());
        QCOMPARE(other.fileName, site);
        other.SaveNTSetting("new/folder/site.TRset");
        QVERIFY(QFile::exists("new/folder/site.TRset"));
    }
};

WINDOW_TEST_MAIN(TestFiles)
#include "test_files.moc"
