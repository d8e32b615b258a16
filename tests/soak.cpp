// A seeded random UI test: uses the window and its menu at random while the module misbehaves at
// random. After each action, labels and enabled states must match the port and the running
// sequences.

#include "window_fixture.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QThread>

#include <cstdlib>

/// The actions; one that is listed more often is chosen more often.
static const QString actions =
    "connect connect connect scan_parameters scan_parameters applyButton applyButton Reset "
    "reset_allparameters checkBox scanport action action_open_2 action_save kind kind ticks ticks "
    "ticks edit edit hang_up come_back come_back come_back send send stall faults faults close "
    "close";

class Monkey : public QObject {
public:
    Monkey(Kind kind, quint32 seedNumber, int actionCount)
        : seed(seedNumber)
        , random(seedNumber)
        , count(actionCount)
        , fixture(kind)
    {
        QDir::setCurrent(folder.path());
        fixture.leavesDialogsOpen = true;
        act();
    }

    QStringList done; ///< actions

private:
    template <class List> typename List::value_type oneOf(const List &choices, quint32 number)
    {
        return choices.at(static_cast<int>(number % static_cast<quint32>(choices.size())));
    }

    /// The choice depends on the seed alone. An action that is impossible at the moment is skipped.
    void act()
    {
        const bool over = done.size() == count;
        QWidget *dialog = QApplication::activeModalWidget();
        if (over && !dialog)
            return QApplication::quit();
        const QString action = over ? "close" : oneOf(actions.split(' '), random.generate());
        const quint32 number = random.generate();
        // First, because a click may open a box and return much later.
        QTimer::singleShot(1 + static_cast<int>(number % 12), this, &Monkey::act);
        if (!over)
            done.append(action);
        if (dialog && action == "close")
            close(dialog, number);
        else if (!useLine(action, number) && !dialog)
            useWindow(action, number);
        // While a box is open, a change may be incomplete.
        if (QThread::currentThread()->loopLevel() == 1)
            check();
    }

    void useWindow(const QString &action, quint32 number)
    {
        const ParameterCase field = oneOf(parametersOf(Kind::Universal), number);
        const int choice = static_cast<int>(number % 30);
        if (action.startsWith("action"))
            fixture.trigger(action);
        else if (action == "kind" && fixture.isEnabled("conbox0"))
            fixture.find<QComboBox>("conbox0")->setCurrentIndex(choice % 3);
        else if (action == "ticks")
            fixture.setTick(8 + choice);
        else if (action == "edit" && fixture.isEnabled(field.widget))
            fixture.enter(field.widget,
                          field.widget[0] == 'l' && choice > 9 ? "\u0439" : field.inForm);
        else if (fixture.window.findChild<QAbstractButton *>(action) && fixture.isVisible(action))
            fixture.click(action);
        if (action == "scanport")
            fixture.choosePort(fixture.module.portPath());
    }

    bool useLine(const QString &action, quint32 number)
    {
        simulator::SimulatedModule &module = fixture.module;
        const QByteArray deliveries = "<ok>|<ok>\r\n|?|\r\n|%00|off|MAC 01|%1b[31m%ff%fe|"
                                      "parity 0\r\nparity none|MAC "
            + QByteArray(5000, 'x');
        if (action == "hang_up")
            module.hangUp();
        else if (action == "come_back")
            module.reconnect();
        else if (action == "send" || action == "stall")
            module.send(QByteArray::fromPercentEncoding(
                expand(oneOf(deliveries.split('|'), number), module.kind())));
        else if (action == "faults")
            misbehave(number);
        else
            return false;
        if (action == "stall") // blocks until the next tick is due as well
            QThread::msleep(40);
        return true;
    }

    void misbehave(quint32 number)
    {
        simulator::Faults faults;
        faults.delayMs = static_cast<int>(number % 41);
        faults.silent = number % 7 == 0;
        faults.split = number % 5 == 0;
        faults.empty = number % 11 == 0;
        faults.garbage = number % 8 == 0;
        faults.hangUpAfter = number % 9 == 0 ? static_cast<int>(number % 20) : -1;
        if (number % 3 == 0)
            faults.refuse = oneOf(fixture.module.queries(), number);
        fixture.module.faults = faults;
    }

    void close(QWidget *dialog, quint32 number)
    {
        auto *fileDialog = qobject_cast<QFileDialog *>(dialog);
        if (!fileDialog)
            return oneOf(qobject_cast<QMessageBox *>(dialog)->buttons(), number)->click();
        QFile file(folder.filePath(number % 2 == 0 ? "a.TRset" : "b.TRset"));
        if (fileDialog->acceptMode() == QFileDialog::AcceptSave)
            file.remove(); // the dialog would ask whether to overwrite it
        else if (!file.exists() && file.open(QIODevice::WriteOnly))
            file.write("[MODUL]\nName=\"Modbus universal \"\n\n\xff=");
        UiDriver::answer(fileDialog, number % 3 == 0 ? "" : file.fileName());
    }

    void check()
    {
        const bool connected = fixture.text("connect") == "Отсоединиться";
        QStringList state = fixture.state().split(", ").mid(4);
        const auto reading = state.removeAll("read");
        const auto writing = state.removeAll("write");
        if (!state.isEmpty())
            fail("enabled state does not match the connection: " + state.join(' '));
        if (reading + writing > 1)
            fail("two sequences at once");
        // The module holds its pty's slave open; a connected window opens it a second time.
        // In containers, the master is in the same folder as the slaves. A hung-up slave is
        // deleted.
        const QRegularExpression slave("^/dev/pts/[0-9]+( \\(deleted\\))?$");
        int lines = 0;
        for (const QFileInfo &file : QDir("/proc/self/fd").entryInfoList(QDir::System))
            lines += slave.match(file.symLinkTarget()).hasMatch() && file.fileName().toInt() > 2;
        if (lines != (QFile::exists(fixture.module.portPath()) ? 1 : 0) + (connected ? 1 : 0))
            fail(QString("%1 ptys open, which does not match the connection").arg(lines));

        const bool saysReading = fixture.text("scan_parameters") == "Стоп сканирования";
        const bool saysWriting = fixture.text("applyButton") == "Остановить запись";
        // A lost port leaves the button texts of the sequence that it ended.
        labelsMayStay = (labelsMayStay || !fixture.boxes.isEmpty() || !connected)
            && (saysReading || saysWriting);
        fixture.boxes.clear();
        if ((saysReading != (reading > 0) && !(saysReading && labelsMayStay))
            || (saysWriting != (writing > 0) && !(saysWriting && labelsMayStay)))
            fail("labels do not match the running sequences: " + fixture.state());
    }

    [[noreturn]] void fail(const QString &what)
    {
        fprintf(stderr, "soak: %s, %s\nlast actions:\n  %s\nto repeat them: soak %u %d\n",
                qPrintable(nameOf(fixture.module.kind())), qPrintable(what),
                qPrintable(done.mid(done.size() - 40).join("\n  ")), seed,
                static_cast<int>(done.size()));
        std::_Exit(1); // boxes may be open, each with its own event loop
    }

    const quint32 seed;
    QRandomGenerator random;
    const int count; ///< number of actions
    bool labelsMayStay = false;
    QTemporaryDir folder;
    WindowFixture fixture;
};

int main(int argc, char *argv[])
{
    const Application application(argc, argv);
    const QStringList given = QCoreApplication::arguments();
    const quint32 seed = given.value(1).toUInt();
    const int count = given.value(2).toInt();
    if (given.size() != 3 || count < 1)
        qFatal("Usage: soak SEED ACTIONS");
    for (const Kind kind : allKinds) {
        const Monkey monkey(kind, seed, count);
        QApplication::exec();
        printf("soak: %s, seed %u, %d actions\n", qPrintable(nameOf(kind)), seed, count);
    }
    return 0;
}
