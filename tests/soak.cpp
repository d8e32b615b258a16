// A seeded monkey: uses the window and its menu at random while the module misbehaves at random,
// and after each action looks whether what the window shows is what it does.

#include "module_dialect.h"
#include "window_driver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QMessageBox>
#include <QRandomGenerator>
#include <QThread>

#include <cstdlib>

class Monkey : public QObject {
public:
    Monkey(Kind kind, quint32 seedNumber)
        : seed(seedNumber)
        , random(seedNumber)
        , driver(kind)
    {
        QDir::setCurrent(folder.path());
        for (const Kind each : allKinds)
            knownBoxes << box::noConnection.arg(nameOf(each)) << box::success.arg(nameOf(each));
        driver.leavesDialogsOpen = true;
        driver.onBox = [this](QMessageBox *) {
            if (!knownBoxes.contains(driver.boxes.last()))
                fail("unknown box \"" + driver.boxes.last() + '"');
        };
        clock.start();
    }

    /// Returns the number of actions.
    int play(int mostActions, qint64 seconds)
    {
        actionsLeft = mostActions;
        endMs = 1000 * seconds;
        act();
        QApplication::exec();
        return count;
    }

private:
    /// What to do next. It follows from the seed alone: always the same numbers are drawn, and what
    /// makes no sense just then is left undone.
    struct Action {
        int what;
        quint32 first;
        quint32 second;
        int pauseMs;
    };
    Action draw()
    {
        return {random.bounded(100), random.generate(), random.generate(), 1 + random.bounded(12)};
    }

    template <class List>
    static typename List::value_type oneOf(const List &choices, quint32 number)
    {
        return choices.at(static_cast<int>(number % static_cast<quint32>(choices.size())));
    }

    void note(const QString &action) { actions = actions.mid(actions.size() - 39) << action; }

    [[noreturn]] void fail(const QString &what)
    {
        fprintf(stderr,
                "soak: %s, %s\nlast actions:\n  %s\nto repeat them: soak --seed %u --actions %d\n",
                qPrintable(nameOf(driver.module.kind())), qPrintable(what),
                qPrintable(actions.join("\n  ")), seed, count);
        std::_Exit(1); // boxes may be open, each in an event loop of its own
    }

    void act()
    {
        if (clock.elapsed() - lastActMs > 5000)
            fail("the event loop stood still");
        lastActMs = clock.elapsed();
        QWidget *dialog = QApplication::activeModalWidget();
        const bool over = actionsLeft-- <= 0 || lastActMs > endMs;
        if (over && !dialog) {
            QApplication::quit();
            return;
        }
        const Action action = draw();
        // First, for a click may open a box and return long after.
        QTimer::singleShot(action.pauseMs, this, &Monkey::act);
        if (!over)
            ++count;
        if (dialog && (over || action.what >= 90))
            close(dialog, action);
        else if (action.what < 60 && !dialog)
            useWindow(action);
        else if (action.what < 90)
            useLine(action);
        // A box stands in the middle of a change; what is around it need not agree yet.
        if (QThread::currentThread()->loopLevel() == 1)
            check();
    }

    void useWindow(const Action &action)
    {
        const ParameterCase field = oneOf(parametersOf(Kind::Universal), action.first);
        if (action.what < 35)
            click(oneOf(QStringList{"connect", "connect", "connect", "scan_parameters",
                                    "scan_parameters", "applyButton", "applyButton", "Reset",
                                    "reset_allparameters", "checkBox", "scanport"},
                        action.first));
        else if (action.what < 40 && driver.isEnabled("conbox0"))
            driver.find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(action.first % 3));
        else if (action.what < 42)
            useMenu(oneOf(QStringList{"action", "action_open_2", "action_save"}, action.first));
        else if (action.what < 52)
            driver.setTick(8 + static_cast<int>(action.first % 30));
        else if (driver.isEnabled(field.widget))
            edit(field, action.second);
    }

    void click(const QString &button)
    {
        if (!driver.isEnabled(button) || !driver.isVisible(button))
            return;
        note("click " + button);
        driver.click(button);
        if (button == "scanport")
            driver.choosePort(driver.module.portPath());
    }

    void useMenu(const QString &action)
    {
        note("menu " + action);
        driver.trigger(action);
    }

    void edit(const ParameterCase &field, quint32 number)
    {
        note("edit " + field.widget);
        if (auto *combo = qobject_cast<QComboBox *>(driver.find<QWidget>(field.widget)))
            combo->setCurrentIndex(static_cast<int>(number % 3));
        else
            driver.enter(field.widget,
                         oneOf(QStringList{"", "999", "\u0439 \u00e9", field.inForm}, number));
    }

    void useLine(const Action &action)
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
        if (action.what < 63) {
            note("hang up");
            module.hangUp();
        } else if (action.what < 74) {
            module.comeBack();
        } else if (action.what < 82) {
            note("send");
            module.send(oneOf(deliveries, action.first));
            // And now and then the window is held up until a tick is due as well.
            if (action.second % 2 == 0)
                QThread::msleep(40);
        } else {
            misbehave(action.first, action.second);
        }
    }

    void misbehave(quint32 number, quint32 other)
    {
        note("faults");
        simulator::SimulatedModule::Faults &faults = driver.module.faults;
        faults = {};
        faults.delayMs = static_cast<int>(number % 40);
        faults.silent = other % 6 == 0;
        faults.split = other % 5 == 0;
        faults.empty = other % 11 == 0;
        faults.garbage = other % 7 == 0;
        faults.hangUpAfter = other % 8 == 0 ? static_cast<int>(number % 20) : -1;
        if (other % 3 == 0)
            faults.refuse = oneOf(driver.module.queries(), number);
    }

    void close(QWidget *dialog, const Action &action)
    {
        note("close \"" + dialog->windowTitle() + '"');
        if (auto *box = qobject_cast<QMessageBox *>(dialog)) {
            oneOf(box->buttons(), action.first)->click();
            return;
        }
        auto *fileDialog = qobject_cast<QFileDialog *>(dialog);
        QFile file(folder.filePath(oneOf(QStringList{"a.TRset", "b.TRset"}, action.first)));
        if (fileDialog->acceptMode() == QFileDialog::AcceptSave)
            file.remove(); // or the dialog would ask
        else if (!file.exists() && file.open(QIODevice::WriteOnly))
            file.write("[MODUL]\nName=\"Modbus universal \"\n\n\xff=");
        WindowDriver::answer(fileDialog, action.second % 3 == 0 ? "" : file.fileName());
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
        if (!linked && connectText != "Cоединиться")
            fail("connect reads " + connectText);
        QStringList state = driver.state().split(", ").mid(4);
        const int reading = state.removeAll("read");
        const int writing = state.removeAll("write");
        if (reading + writing > 1)
            fail("two sequences at once");
        if (!state.isEmpty())
            fail("the link and " + state.join(' '));
        // Of ptys in this process the module has both ends, the window one more if it is connected.
        int lines = 0;
        for (const QFileInfo &file : QDir("/proc/self/fd").entryInfoList(QDir::System))
            lines += file.symLinkTarget().startsWith("/dev/pts/") && file.fileName().toInt() > 2;
        if (lines != (QFile::exists(driver.module.portPath()) ? 1 : 0) + (linked ? 1 : 0))
            fail(QString("the link and the open port: %1 lines").arg(lines));

        if ((saysReading != (reading > 0) && !(saysReading && labelsMayStay))
            || (saysWriting != (writing > 0) && !(saysWriting && labelsMayStay)))
            fail("the labels and what runs: " + driver.state());
    }

    const quint32 seed;
    QRandomGenerator random;
    QElapsedTimer clock;
    qint64 endMs = 0;
    int actionsLeft = 0;
    int count = 0;
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
    parser.setApplicationDescription(
        "Uses the window at random, on modules of each kind that misbehave.\n"
        "The same seed means the same actions. What comes of them can differ, as the window's "
        "timers\n"
        "and the line have a clock of their own.");
    parser.addHelpOption();
    parser.addOptions(
        {{"seconds", "How long at the most, for all kinds together (60).", "N", "60"},
         {"actions", "How many actions at the most, for each kind.", "N", "1000000000"},
         {"seed", "What the actions follow from (the time of day).", "N",
          QString::number(QRandomGenerator::global()->bounded(100000U))}});
    parser.process(application);
    QVector<int> numbers;
    for (const char *option : {"seconds", "actions", "seed"}) {
        bool isNumber = false;
        numbers.append(parser.value(option).toInt(&isNumber));
        if (!isNumber || numbers.last() < 0) {
            fprintf(stderr, "soak: --%s takes a whole number\n", option);
            return 2;
        }
    }
    printf("soak: seed %d\n", numbers[2]);
    for (const Kind kind : allKinds) {
        fflush(stdout);
        Monkey monkey(kind, static_cast<quint32>(numbers[2]));
        const int actions = monkey.play(numbers[1], numbers[0] / 3 + 1);
        printf("soak: %s, %d actions\n", qPrintable(nameOf(kind)), actions);
    }
    return 0;
}
