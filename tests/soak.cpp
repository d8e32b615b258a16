// A seeded monkey: uses the window and its menu at random while the module misbehaves at random,
// and after each action looks whether what the window shows is what it does.

#include "window_driver.h"

#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QFileInfo>
#include <QLineEdit>
#include <QRandomGenerator>

#include <cstdlib>

namespace {

/// Every box that the program has, by title and text.
const QStringList knownBoxes{
    "Отказано в доступе: Ошибка соединения",
    "Critical Error: Ошибка соединения",
    "нет соединения с модуля: Ошибка соединения",
    "Ошибка соединения: нет соединения с модулем Modbus TCP-RTU",
    "Ошибка соединения: нет соединения с модулем Modbus RTU-TCP",
    "Ошибка соединения: нет соединения с модулем Modbus universal",
    "Ошибка: <FONT COLOR='#800000'> Ошибка записи </FONT>",
    "Ошибка: <FONT COLOR='#800000'>Ошибка записи </FONT>",
    "Ошибка: Файл конфигурации не выбран",
    "Результы изменения: <FONT COLOR='#008000'>Изменение параметров Modbus TCP-RTU было "
    "успешно</FONT>",
    "Результы изменения: <FONT COLOR='#008000'>Изменение параметров Modbus RTU-TCP было "
    "успешно</FONT>",
    "Результы изменения: <FONT COLOR='#008000'>Изменение параметров Modbus universal было "
    "успешно</FONT>",
    "Сброс: Вы действительно хотите cбросить к заводским настройкам?",
};

/// What a command on the line may be; a write command is followed by its value.
const QByteArrayList knownCommands{"MAC",
                                   "ip",
                                   "MASK",
                                   "GATEWAY",
                                   "PORT TCP",
                                   "parity",
                                   "SPEED RS485",
                                   "STOP BIT",
                                   "IP SERVER TCP",
                                   "TIMEOUT TCP",
                                   "MODE TCP",
                                   "version",
                                   "timeout response",
                                   "rtu virtual id",
                                   "tcp slave id",
                                   "CHANGE MODE TCP:",
                                   "CHANGE IP:",
                                   "CHANGE MASK:",
                                   "CHANGE GATEWAY:",
                                   "CHANGE PORT TCP:",
                                   "CHANGE PARITY:",
                                   "CHANGE SPEED RS485:",
                                   "CHANGE STOP BIT:",
                                   "change timeout response:",
                                   "CHANGE IP SERVER TCP:",
                                   "CHANGE TIMEOUT TCP:",
                                   "change rtu virtual id:",
                                   "change tcp slave id:",
                                   "RESET",
                                   "reset",
                                   "LOAD SETTING:DEFAULT"};

/// Fast as the monkey clicks, commands may reach the module together.
bool isKnown(const QByteArray &commands)
{
    return std::any_of(knownCommands.begin(), knownCommands.end(), [&](const QByteArray &start) {
        if (!commands.startsWith(start))
            return false;
        return start.endsWith(':') || commands == start || isKnown(commands.mid(start.size()));
    });
}

class Monkey : public QObject {
public:
    Monkey(quint32 seed, int seconds);
    bool failed = false;
    qint64 count = 0; ///< of actions

private:
    void act();
    void useWindow();
    void useLine();
    void answerDialog(QFileDialog *dialog);
    void answerBox(QMessageBox *box);
    void edit();
    void check();
    void checkLink();
    void checkSequences();
    void fail(const QString &what);
    void note(const QString &action);

    int upTo(int highest) { return random.bounded(highest + 1); }
    template <class T> T oneOf(const QList<T> &choices)
    {
        return choices.at(random.bounded(choices.size()));
    }

    QRandomGenerator random;
    const quint32 seed;
    QElapsedTimer clock;
    const qint64 endMs;
    qint64 lastBeat = 0;
    QTimer heart;
    QStringList actions;
    QTemporaryDir folder;
    WindowDriver driver;
    bool wasLost = false; ///< since then a label may speak of a sequence that is no more
};

Monkey::Monkey(quint32 seedNumber, int seconds)
    : random(seedNumber)
    , seed(seedNumber)
    , endMs(1000LL * seconds)
    , driver(static_cast<Kind>(seedNumber % 3))
{
    QDir::setCurrent(folder.path());
    driver.module.restartMs = 50;
    driver.boxes.handle = [this](QMessageBox *box) {
        if (!knownBoxes.contains(driver.boxes.seen.last()))
            fail("unknown box \"" + driver.boxes.seen.last() + '"');
        QTimer::singleShot(upTo(200), box, [this, box] { answerBox(box); });
    };
    clock.start();
    connect(&heart, &QTimer::timeout, this, [this] {
        if (clock.elapsed() - lastBeat > 5000)
            fail("the event loop stood still");
        lastBeat = clock.elapsed();
    });
    heart.start(20);
    act();
}

void Monkey::note(const QString &action)
{
    ++count;
    actions.append(action);
    if (actions.size() > 40)
        actions.removeFirst();
}

void Monkey::fail(const QString &what)
{
    if (failed)
        return;
    failed = true;
    fprintf(stderr, "soak: %s\nlast actions:\n  %s\nto replay: soak --seed %u --seconds %lld\n",
            qPrintable(what), qPrintable(actions.join("\n  ")), seed, endMs / 1000);
    std::_Exit(1); // boxes may be open, each in an event loop of its own
}

void Monkey::act()
{
    if (clock.elapsed() > endMs && !QApplication::activeModalWidget()) {
        QApplication::quit();
        return;
    }
    // First, for a click may open a box and return long after.
    QTimer::singleShot(upTo(12), this, &Monkey::act);
    if (auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget()))
        answerDialog(dialog);
    else if (QApplication::activeModalWidget() || upTo(3) == 0)
        useLine();
    else
        useWindow();
    check();
}

void Monkey::useWindow()
{
    const QList<const char *> buttons{
        "connect",     "connect", "scan_parameters",     "scan_parameters", "applyButton",
        "applyButton", "Reset",   "reset_allparameters", "checkBox",        "scanport"};
    const int choice = upTo(9);
    if (choice < 5) {
        const char *button = oneOf(buttons);
        if (!driver.isEnabled(button) || !driver.find<QWidget>(button)->isVisible())
            return;
        note(QString("click ") + button);
        driver.click(button);
        if (button == QString("scanport"))
            driver.choosePort(driver.module.portPath());
    } else if (choice == 5 && driver.isEnabled("conbox0")) {
        note("kind");
        driver.enter("conbox0", '#' + QString::number(upTo(2)));
    } else if (choice == 6 && upTo(4) == 0) {
        const char *action = oneOf(QList<const char *>{"action", "action_open_2", "action_save"});
        note(QString("menu ") + action);
        driver.find<QAction>(action)->trigger();
    } else if (QTimer *timer = driver.activeTimer()) {
        if (timer->interval() == 1000) {
            note("fast ticks");
            timer->setInterval(8 + upTo(30));
        }
    } else {
        edit();
    }
}

void Monkey::edit()
{
    const ParameterCase parameter = oneOf(parametersOf(Kind::Universal).toList());
    if (!driver.isEnabled(parameter.widget))
        return;
    note(QString("edit ") + parameter.widget);
    driver.enter(parameter.widget,
                 parameter.inForm[0] == '#'
                     ? '#' + QString::number(upTo(2))
                     : oneOf(QStringList{"", "1.2.3.4", "999", "\u0439 \u00e9", parameter.inForm}));
}

void Monkey::useLine()
{
    simulator::SimulatedModule &module = driver.module;
    const QList<QByteArray> deliveries{"OK",
                                       "ok\r\n",
                                       "?",
                                       "\r\n",
                                       QByteArray(3, '\0'),
                                       "off",
                                       "MAC 01",
                                       "\x1b[31m\xff\xfe",
                                       QByteArray(5000, 'x'),
                                       "parity 0\r\nparity none"};
    switch (upTo(11)) {
    case 0:
        note("hang up");
        module.hangUp();
        break;
    case 1:
    case 2:
    case 3:
        module.comeBack();
        break;
    case 4:
        note("send");
        module.send(oneOf(deliveries));
        break;
    case 5:
        note("faults");
        module.faults = {};
        module.faults.silent = upTo(5) == 0;
        module.faults.delayMs = upTo(40);
        module.faults.split = upTo(4) == 0;
        module.faults.empty = upTo(9) == 0;
        module.faults.garbage = upTo(4) == 0;
        module.faults.hangUpAfter = upTo(4) == 0 ? upTo(20) : -1;
        if (upTo(2) == 0)
            module.faults.refuse = oneOf(module.queries().toList());
        break;
    default:
        break;
    }
}

void Monkey::answerDialog(QFileDialog *dialog)
{
    if (upTo(2) == 0) {
        note("cancel the file dialog");
        dialog->reject();
        return;
    }
    note("answer the file dialog");
    const QString path = folder.filePath(oneOf(QStringList{"a.TRset", "b.TRset"}));
    if (dialog->acceptMode() == QFileDialog::AcceptOpen) {
        QFile file(path);
        if (!file.exists() && file.open(QIODevice::WriteOnly))
            file.write(oneOf(QList<QByteArray>{"", "[MODUL]\nName=Modbus RTU-TCP\n",
                                               "[MODUL]\nName=\"Modbus universal \"\n\xff\0="}));
    } else {
        QFile::remove(path);
    }
    dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
    QMetaObject::invokeMethod(dialog, "accept");
}

void Monkey::answerBox(QMessageBox *box)
{
    if (box != QApplication::activeModalWidget()) { // one above has to go first
        QTimer::singleShot(20, box, [this, box] { answerBox(box); });
        return;
    }
    note("close \"" + box->windowTitle() + '"');
    oneOf(box->buttons())->click();
}

void Monkey::check()
{
    for (const QByteArray &command : qAsConst(driver.commands)) {
        if (!isKnown(command))
            fail("unknown command \"" + command + '"');
    }
    driver.commands.clear();
    wasLost = wasLost || !driver.boxes.seen.isEmpty();
    driver.boxes.seen.clear();
    driver.debugLines.clear();
    // A box stands in the middle of a change; what is around it need not agree yet.
    if (QApplication::activeModalWidget() || !Boxes::open().isEmpty())
        return;
    checkLink();
    checkSequences();
}

void Monkey::checkLink()
{
    const bool linked = driver.text("connect") == "Отсоединиться";
    if (!linked && driver.text("connect") != "Cоединиться")
        fail("connect reads " + driver.text("connect"));
    for (const char *name : {"scan_parameters", "applyButton", "Reset", "reset_allparameters"}) {
        if (driver.isEnabled(name) != linked)
            fail(QString("link and ") + name);
    }
    for (const char *name : {"conbox0", "serialPortInfoListBox", "scanport"}) {
        if (driver.isEnabled(name) == linked)
            fail(QString("link and ") + name);
    }
    // Of ptys in this process the module has both ends, the window one more if it is connected.
    int lines = 0;
    const QFileInfoList files =
        QDir("/proc/self/fd").entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    for (const QFileInfo &file : files)
        lines +=
            file.symLinkTarget().startsWith("/dev/pts/") && file.fileName().toInt() > 2 ? 1 : 0;
    const bool moduleOnLine = QFileInfo::exists(driver.module.portPath());
    if (lines != (moduleOnLine ? 1 : 0) + (linked ? 1 : 0))
        fail(QString("link and open port: %1 lines").arg(lines));
}

void Monkey::checkSequences()
{
    const bool scanning = driver.timer(WindowDriver::Scan)->isActive()
        || driver.timer(WindowDriver::ScanAll)->isActive();
    const bool writing = driver.timer(WindowDriver::Change)->isActive()
        || driver.timer(WindowDriver::ChangeMode)->isActive();
    int active = 0;
    for (const auto sequence : {WindowDriver::Scan, WindowDriver::Change, WindowDriver::ScanAll,
                                WindowDriver::ChangeMode})
        active += driver.timer(sequence)->isActive() ? 1 : 0;
    if (active > 1)
        fail("two sequences at once");
    const bool saysScanning = driver.text("scan_parameters") == "Стоп сканирования";
    const bool saysWriting = driver.text("applyButton") == "Остановить запись";
    // Losing the port leaves the labels of what it ended.
    const bool linked = driver.isEnabled("Reset");
    if (scanning && !saysScanning)
        fail("scans, but does not say so");
    if (writing && !saysWriting)
        fail("writes, but does not say so");
    wasLost = wasLost || !linked;
    if (!saysScanning && !saysWriting)
        wasLost = false;
    if (!wasLost && (saysScanning != scanning || saysWriting != writing))
        fail("says that it is busy, but is not");
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Uses the window at random, on a module that misbehaves.");
    parser.addHelpOption();
    parser.addOptions({{"seconds", "How long (60).", "N", "60"},
                       {"seed", "What to repeat; else the time of day.", "N"}});
    parser.process(application);
    const quint32 seed = parser.isSet("seed") ? parser.value("seed").toUInt()
                                              : QRandomGenerator::global()->generate() % 100000;
    printf("soak: seed %u\n", seed);
    fflush(stdout);
    Monkey monkey(seed, parser.value("seconds").toInt());
    QApplication::exec();
    printf("soak: %lld actions\n", monkey.count);
    return monkey.failed ? 1 : 0;
}
