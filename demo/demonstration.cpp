// The scripted demo: reads a simulated module, writes new values and reads them again, saves them
// to a file and loads the file, and prints the results.

#include "application.h"
#include "simulator_options.h"
#include "termination.h"
#include "texts.h"
#include "ui_driver.h"
#include "ui_mainwindow.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QSocketNotifier>

#include <cstdio>
#include <stdexcept>
#include <utility>

namespace {

void print(const QString &line)
{
    // UTF-8 in every locale, because the texts of the form are Cyrillic.
    std::fputs((line + '\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

class Demonstrator : public UiDriver {
public:
    /// Throws if the module does not start.
    Demonstrator(const simulator::Options &options, const QDir &pictureFolder, int tick);

    /// Returns whether everything was right. Throws if it cannot continue.
    bool demonstrate();

private:
    /// A parameter of the module kind.
    struct Field {
        QString name;
        QString newValue; ///< empty if it is read-only
        QString readBack; ///< what is read after newValue was written
    };

    QString newValue(const Parameter &parameter, const QString &field);
    void say(const QString &what) const;
    void takeScreenshot(const QString &name);
    void connect();
    void run(const QString &button, const QString &finalLabel, const QString &screenshot);
    QStringList values();
    bool report(const QStringList &before, const QStringList &after, const QStringList &loaded);

    simulator::SimulatedModule module;
    const QDir pictures;
    const int tickMs;
    QVector<Field> fields; ///< in the order in which they are read
    QElapsedTimer clock;
};

Demonstrator::Demonstrator(const simulator::Options &options, const QDir &pictureFolder, int tick)
    : module(options)
    , pictures(pictureFolder)
    , tickMs(tick)
{
    module.setValue("tcp slave id", "17"); // to be overwritten
    if (!module.start())
        throw std::runtime_error(module.errorString().toStdString());
    const int kind = static_cast<int>(module.kind());
    find<QComboBox>("conbox0")->setCurrentIndex(kind);
    QMainWindow form; // of its own, to look up the names of the fields
    Ui_MainWindow ui;
    ui.setupUi(&form);
    for (const Parameter *parameter : readList(static_cast<ModuleKind>(kind))) {
        const auto nameOf = [&ui](auto field) { return (ui.*field)->objectName(); };
        const QString name = std::visit(nameOf, parameter->field);
        const QString value = newValue(*parameter, name);
        const bool isText = std::holds_alternative<QLineEdit * Ui_MainWindow::*>(parameter->field);
        fields.append({name, value, isText ? value.left(parameter->width) : value});
    }
    onBox = [this](QMessageBox * /*box*/) {
        if (!boxes.last().startsWith("Information: "))
            abortWait("unexpected message box \"" + boxes.last() + '"');
    };
    window.show();
    // The list of ports keeps its present width, however long the module's path is.
    Application::processEvents();
}

bool Demonstrator::demonstrate()
{
    clock.start();
    choosePort(module.portPath());
    connect();
    say(QString("reading %1 parameters, one a second").arg(fields.size()));
    run("scan_parameters", text::scan, "read-half");
    takeScreenshot("read-end");
    const QStringList before = values();

    say("writing new values, one every two seconds");
    for (const Field &field : std::as_const(fields)) {
        if (!field.newValue.isEmpty())
            enter(field.name, field.newValue);
    }
    run("applyButton", text::apply, "write-half");
    waitFor("success", [this] { return !boxes.isEmpty(); });
    say("success; the module restarts");
    waitFor("restart of the module", [this] {
        return text("statusbar") == text::disconnected && QFile::exists(module.portPath());
    });

    connect();
    say("reading everything again");
    run("scan_parameters", text::scan, "read-again");
    const QStringList after = values();
    say("saving that to a file");
    const QTemporaryDir folder;
    trigger("action_save", folder.filePath("demonstration.TRset"));
    say("emptying the form, by a read that is stopped at once, and loading the file");
    click("scan_parameters");
    click("scan_parameters");
    trigger("action_open_2", folder.filePath("demonstration.TRset"));
    const QStringList loaded = values();
    say("disconnecting");
    click("connect");
    return report(before, after, loaded);
}

/// A value that the module accepts; empty if the parameter is read-only.
QString Demonstrator::newValue(const Parameter &parameter, const QString &field)
{
    if (!parameter.writeCommand)
        return {};
    if (const auto *combo = window.findChild<QComboBox *>(field))
        return combo->itemText(combo->count() - 1);
    for (const char *value : {"10.20.30.40", "255.255.0.0", "10502", "60"}) {
        const QByteArray command = QByteArray(parameter.writeCommand) + value;
        if (simulator::parseCommand(module.kind(), command).type == simulator::Command::Type::Write)
            return value;
    }
    throw std::runtime_error("no new value is known for " + field.toStdString());
}

void Demonstrator::say(const QString &what) const
{
    print(QString("%1 s  %2").arg(clock.elapsed() / 1000, 3).arg(what));
}

void Demonstrator::takeScreenshot(const QString &name)
{
    const QString path = pictures.filePath(name + ".png");
    if (!window.grab().save(path))
        throw std::runtime_error("cannot write " + path.toStdString());
}

void Demonstrator::connect()
{
    say("connecting to " + module.portPath());
    click("connect");
    waitFor("connection", [this] { return text("connect") == text::disconnectPort; });
}

/// Runs a sequence to its end, with a screenshot halfway.
void Demonstrator::run(const QString &button, const QString &finalLabel, const QString &screenshot)
{
    click(button);
    setTick(tickMs);
    const QString middle = fields[fields.size() / 2].name;
    const auto isOver = [&] { return text(button) == finalLabel; };
    const auto isHalfway = [&] { return isOver() || !mark(middle).isEmpty(); };
    waitFor("mark", isHalfway, 60000);
    takeScreenshot(screenshot);
    waitFor("end", isOver, 60000);
}

QStringList Demonstrator::values()
{
    QStringList values;
    for (const Field &field : std::as_const(fields))
        values.append(text(field.name));
    return values;
}

/// Prints a row for each parameter. Returns whether all values are as they should be.
bool Demonstrator::report(const QStringList &before, const QStringList &after,
                          const QStringList &loaded)
{
    const auto printRow = [](const QStringList &cells) {
        QString row;
        for (const QString &cell : cells)
            row += cell.leftJustified(row.isEmpty() ? 29 : 19);
        print(row);
    };
    bool allRight = true;
    printRow({"\nParameter", "before", "written", "after", "from the file", "finding"});
    for (int i = 0; i < fields.size(); ++i) {
        const Field &field = fields.at(i);
        const bool isReadOnly = field.newValue.isEmpty();
        const QString expected = isReadOnly ? before[i] : field.readBack;
        // What is read-only is not saved.
        const bool isRight = !before[i].isEmpty() && after[i] == expected
            && loaded[i] == (isReadOnly ? QString() : expected);
        const QString finding = field.newValue == field.readBack ? "ok" : "ok: read in part";
        printRow({labelOf(find<QWidget>(field.name)).simplified(), before[i], field.newValue,
                  after[i], loaded[i], isRight ? finding : "DIFFERENT"});
        allRight = allRight && isRight;
    }
    return allRight;
}

} // namespace

int main(int argc, char *argv[])
{
    // Before the application starts threads.
    const int terminationFd = simulator::openTerminationFd();

    Application application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription("Runs a scripted demo of the configurator with a simulated "
                                     "module: read, write, save, load.\n"
                                     "Prints the results and exits with 0 if all was right.");
    parser.addOptions({
        {"screenshots", "Folder for screenshots (the current one).", "folder", "."},
        {"tick", "Time from one step of a sequence to the next (1000 ms).", "ms", "1000"},
    });
    const simulator::Options options = simulator::processOptions(parser);
    const int tickMs = parser.value("tick").toInt();
    if (tickMs < 1)
        return simulator::reportStartupError("--tick takes a whole number of 1 or more", 2);
    const QDir pictures(parser.value("screenshots"));
    if (!pictures.mkpath("."))
        return simulator::reportStartupError("cannot create the folder " + pictures.path(), 2);
    // Keep the window's debug output and Qt's warnings out of the report.
    QLoggingCategory::setFilterRules("default.debug=false\ndefault.warning=false");

    try {
        Demonstrator demonstrator(options, pictures, tickMs);
        QSocketNotifier notifier(terminationFd, QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, &demonstrator,
                         [&] { demonstrator.abortWait("terminated by a signal"); });
        return demonstrator.demonstrate() ? 0 : 1;
    } catch (const std::exception &error) {
        print(QString("FAILED: ") + error.what());
        return 1;
    }
}
