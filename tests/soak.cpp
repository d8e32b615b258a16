// A seeded monkey: uses the window and its menu at random while the module misbehaves at random,
// and after each action looks whether what the window shows is what it does.

#include "module_dialect.h"
#include "window_driver.h"

#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QThread>

#include <cstdlib>

class Monkey : public QObject {
public:
    Monkey(quint32 seedNumber, qint64 seconds)
        : seed(seedNumber)
        , endMs(1000 * seconds)
        , random(seedNumber)
        , driver(allKinds[seedNumber % 3])
    {
        QDir::setCurrent(folder.path());
        for (const Kind kind : allKinds)
            knownBoxes << box::noConnection.arg(nameOf(kind)) << box::success.arg(nameOf(kind));
        driver.handleBox = [this](QMessageBox *) {
            if (!knownBoxes.contains(driver.boxes.last()))
                fail("unknown box \"" + driver.boxes.last() + '"');
        };
        driver.handleDialog = [](QFileDialog *) {};
        driver.module.restartMs = 50;
        clock.start();
        act();
    }

    int count = 0; ///< of actions

private:
    int upTo(int highest) { return random.bounded(highest + 1); }
    template <class List> typename List::value_type oneOf(const List &choices)
    {
        return choices.at(upTo(choices.size() - 1));
    }

    void note(const QString &action)
    {
        ++count;
        actions = actions.mid(actions.size() - 39) << action;
    }

    void fail(const QString &what)
    {
        fprintf(stderr, "soak: %s\nlast actions:\n  %s\nto replay: soak --seed %u --seconds %lld\n",
                qPrintable(what), qPrintable(actions.join("\n  ")), seed, endMs / 1000);
        std::_Exit(1); // boxes may be open, each in an event loop of its own
    }

    void act()
    {
        if (clock.elapsed() - lastActMs > 5000)
            fail("the event loop stood still");
        lastActMs = clock.elapsed();
        QWidget *dialog = QApplication::activeModalWidget();
        if (lastActMs > endMs && !dialog) {
            QApplication::quit();
            return;
        }
        // First, for a click may open a box and return long after.
        QTimer::singleShot(1 + upTo(11), this, &Monkey::act);
        if (dialog && upTo(7) == 0)
            close(dialog);
        else if (dialog || upTo(3) == 0)
            useLine();
        else
            useWindow();
        // A box stands in the middle of a change; what is around it need not agree yet.
        if (QThread::currentThread()->loopLevel() == 1)
            check();
    }

    void useWindow()
    {
        const QStringList buttons{"connect", "scan_parameters",     "applyButton",
                                  "Reset",   "reset_allparameters", "checkBox",
                                  "scanport"};
        const QString button = buttons.at(qMax(0, upTo(9) - 3)); // most often the first
        const ParameterCase field = oneOf(parametersOf(Kind::Universal));
        const QStringList texts{"", "999", "\u0439 \u00e9", field.inForm};
        QTimer *timer = driver.activeTimer();
        const int choice = upTo(9);
        if (choice < 5 && driver.isEnabled(button) && driver.find<QWidget>(button)->isVisible()) {
            note("click " + button);
            driver.click(button);
            if (button == "scanport")
                driver.choosePort(driver.module.portPath());
        } else if (choice == 5 && driver.isEnabled("conbox0")) {
            note("kind");
            driver.enter("conbox0", '#' + QString::number(upTo(2)));
        } else if (choice == 6 && upTo(4) == 0) {
            const QString action = oneOf(QStringList{"action", "action_open_2", "action_save"});
            note("menu " + action);
            driver.find<QAction>(action)->trigger();
        } else if (timer && timer->interval() == 1000) {
            note("fast ticks");
            timer->setInterval(8 + upTo(30));
        } else if (driver.isEnabled(field.widget)) {
            note(QString("edit ") + field.widget);
            const bool isCombo = field.inForm[0] == '#';
            driver.enter(field.widget, isCombo ? '#' + QString::number(upTo(2)) : oneOf(texts));
        }
    }

    void useLine()
    {
        simulator::SimulatedModule &module = driver.module;
        const QByteArrayList deliveries{"OK",
                                        "ok\r\n",
                                        "?",
                                        "\r\n",
                                        QByteArray(3, '\0'),
                                        "off",
                                        "MAC 01",
                                        "\x1b[31m\xff\xfe",
                                        QByteArray(5000, 'x'),
                                        "parity 0\r\nparity none"};
        const int choice = upTo(11);
        if (choice == 0) {
            note("hang up");
            module.hangUp();
        } else if (choice <= 3) {
            module.comeBack();
        } else if (choice == 4) {
            note("send");
            module.send(oneOf(deliveries));
        } else if (choice == 5) {
            note("faults");
            module.faults = {};
            module.faults.silent = upTo(5) == 0;
            module.faults.delayMs = upTo(40);
            module.faults.split = upTo(4) == 0;
            module.faults.empty = upTo(9) == 0;
            module.faults.garbage = upTo(4) == 0;
            module.faults.hangUpAfter = upTo(4) == 0 ? upTo(20) : -1;
            if (upTo(2) == 0)
                module.faults.refuse = oneOf(module.queries());
        }
    }

    void close(QWidget *dialog)
    {
        note("close \"" + dialog->windowTitle() + '"');
        if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
            oneOf(box->buttons())->click();
            return;
        }
        auto *fileDialog = qobject_cast<QFileDialog *>(dialog);
        QFile file(folder.filePath(oneOf(QStringList{"a.TRset", "b.TRset"})));
        if (fileDialog->acceptMode() == QFileDialog::AcceptSave)
            file.remove(); // or the dialog would ask
        else if (!file.exists() && file.open(QIODevice::WriteOnly))
            file.write("[MODUL]\nName=\"Modbus universal \"\n\n\xff=");
        WindowDriver::answer(fileDialog, upTo(2) == 0 ? "" : file.fileName());
    }

    static bool isKnown(QByteArray command)
    {
        // What a button sends may go out together with what a tick sends.
        command.replace("RESET", "").replace("LOAD SETTING:DEFAULT", "");
        return command.isEmpty()
            || std::any_of(std::begin(allKinds), std::end(allKinds), [&](Kind kind) {
                   const simulator::Command parsed = simulator::parseCommand(kind, command);
                   return parsed.type != simulator::Command::Type::Invalid
                       || !parsed.query.isEmpty();
               });
    }

    void check()
    {
        for (const QByteArray &command : qAsConst(driver.commands)) {
            if (!isKnown(command))
                fail("unknown command \"" + command + '"');
        }
        const QString connectText = driver.text("connect");
        const bool linked = connectText == "Отсоединиться";
        const bool saysReading = driver.text("scan_parameters") == "Стоп сканирования";
        const bool saysWriting = driver.text("applyButton") == "Остановить запись";
        // Losing the port leaves the labels of what it ended.
        labelsMayStay =
            (labelsMayStay || !driver.boxes.isEmpty() || !linked) && (saysReading || saysWriting);
        driver.commands.clear();
        driver.boxes.clear();
        driver.debugLines.clear();
        if (!linked && connectText != "Cоединиться")
            fail("connect reads " + connectText);
        QStringList state = driver.state().split(", ").mid(4);
        const bool reading = state.removeAll("read") > 0;
        const bool writing = state.removeAll("write") > 0;
        state.removeAll("marks");
        if (!state.isEmpty())
            fail("the link and " + state.join(' '));
        // Of ptys in this process the module has both ends, the window one more if it is connected.
        int lines = 0;
        for (const QFileInfo &file : QDir("/proc/self/fd").entryInfoList(QDir::System))
            lines += file.symLinkTarget().startsWith("/dev/pts/") && file.fileName().toInt() > 2;
        if (lines != (QFile::exists(driver.module.portPath()) ? 1 : 0) + (linked ? 1 : 0))
            fail(QString("the link and the open port: %1 lines").arg(lines));

        const auto isActive = [](const QTimer *timer) { return timer->isActive(); };
        if (std::count_if(driver.timers.begin(), driver.timers.end(), isActive) > 1)
            fail("two sequences at once");
        if ((saysReading != reading && !(saysReading && labelsMayStay))
            || (saysWriting != writing && !(saysWriting && labelsMayStay)))
            fail("the labels and what runs: " + driver.state());
    }

    const quint32 seed;
    const qint64 endMs;
    QRandomGenerator random;
    QElapsedTimer clock;
    qint64 lastActMs = 0;
    QStringList actions;
    QStringList knownBoxes{box::portDenied,     box::portLost, box::emptyDelivery, box::refused,
                           box::refusedTightly, box::noFile,   box::factoryReset};
    bool labelsMayStay = false;
    QTemporaryDir folder;
    WindowDriver driver;
};

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
                                              : QRandomGenerator::global()->bounded(100000U);
    printf("soak: seed %u\n", seed);
    fflush(stdout);
    const Monkey monkey(seed, parser.value("seconds").toInt());
    QApplication::exec();
    printf("soak: %d actions\n", monkey.count);
    return 0;
}
