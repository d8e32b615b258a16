// The scripted demo: reads a simulated module, writes new values and reads them again, saves them
// to a file and loads the file, and prints the results.

#include "application.h"
#include "simulator_options.h"
#include "termination.h"
#include "texts.h"
#include "ui_driver.h"

#include <QComboBox>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMap>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <cstdio>
#include <stdexcept>
#include <utility>

namespace {

struct Field {
    const char *name;
    QString written;    ///< differs from the factory setting; empty if the field is display-only
    QString after = {}; ///< the value that is read afterwards, if it differs from written
};

/// In the order in which they are read.
const Field allFields[] = {
    {"comboBox_mode", "Клиент TCP"},
    {"lineEdit_version", {}},
    {"lineEdit_MAC", {}},
    {"lineEdit_ip", "10.20.30.40"},
    {"lineEdit_mask", "255.255.0.0"},
    {"lineEdit_gateway", "10.20.30.1"},
    {"lineEdit_portTCP", "10502"},
    {"comboBox", "контроль четности"},
    {"comboBox_speed", "57600"},
    {"comboBox_2", "2"},
    {"lineEdit_timewait", "60000", "6000"}, // four digits are read
    {"lineEdit_ipservertcp", "10.20.30.50"},
    {"lineEdit_timeout", "60"},
    {"lineEdit_rtu_virtual_id", "247"},
    {"lineEdit_tcp_id", "33"},
};

using Values = QMap<QString, QString>; ///< by field

void print(const QString &line)
{
    // UTF-8 in every locale, because the texts of the form are Cyrillic.
    std::fputs((line + '\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

void printRow(const QStringList &cells)
{
    const int widths[] = {29, 19, 6, 18, 18, 0};
    QString line;
    for (int i = 0; i < cells.size(); ++i)
        line += cells.at(i).leftJustified(widths[i]);
    print(line);
}

class Demonstrator : public UiDriver {
public:
    Demonstrator(const simulator::Options &options, QString modulePort, int tick);

    /// Returns whether everything was right. Throws if it cannot continue.
    bool demonstrate(const QDir &pictureFolder);

private:
    void say(const QString &what) const;
    void take(const QString &picture);
    void connect();
    Values run(const QString &button, const QString &labelInTheEnd, const QString &picture);
    Values values();
    void enter(const Values &entered);
    bool reportValues(const Values &before, const Values &marks, const Values &after);
    static bool reportFile(const Values &saved, const Values &loaded);

    const QString port;
    const int tickMs;
    QVector<Field> fields; ///< of this module kind
    QDir pictures;
    QTemporaryDir folder;
    QString expectedBox;
    QElapsedTimer clock;
};

Demonstrator::Demonstrator(const simulator::Options &options, QString modulePort, int tick)
    : port(std::move(modulePort))
    , tickMs(tick)
{
    auto *kinds = find<QComboBox>("conbox0");
    kinds->setCurrentIndex(static_cast<int>(options.kind));
    expectedBox = QString("Information: %1: %2")
                      .arg(text::writeResult,
                           QString(text::writeSucceeded).arg(kinds->currentText().trimmed()));
    onBox = [this](QMessageBox * /*box*/) {
        if (boxes.last() != expectedBox)
            abortWait("unexpected message box \"" + boxes.last() + '"');
    };
    window.show();
}

bool Demonstrator::demonstrate(const QDir &pictureFolder)
{
    pictures = pictureFolder;
    clock.start();
    choosePort(port);
    connect();
    for (const Field &field : allFields) {
        if (isVisible(field.name))
            fields.append(field);
    }

    say(QString("reading %1 parameters, one a second").arg(fields.size()));
    const Values marks = run("scan_parameters", text::scan, "read-half");
    take("read-end");
    const Values before = values();
    Values written = before;
    for (const Field &field : fields) {
        if (!field.written.isEmpty())
            written[field.name] = field.written;
    }

    say("writing new values, one every two seconds");
    enter(written);
    run("applyButton", text::apply, "write-half");
    waitFor("success", [this] { return boxes.contains(expectedBox); });
    say("success; the module restarts");
    waitFor("restart of the module",
            [this] { return text("statusbar") == text::disconnected && QFile::exists(port); });

    connect();
    say("reading everything again");
    run("scan_parameters", text::scan, "read-again");
    const Values after = values();
    say("disconnecting");
    click("connect");

    say("saving the form, with the new values, to a file");
    enter(written);
    const Values saved = values();
    trigger("action_save", folder.filePath("demonstration.TRset"));
    say("emptying the form and loading the file");
    for (const Field &field : fields) {
        if (!field.written.isEmpty())
            UiDriver::enter(field.name, QString());
    }
    auto *kinds = find<QComboBox>("conbox0");
    kinds->setCurrentIndex((kinds->currentIndex() + 1) % kinds->count());
    trigger("action_open_2", folder.filePath("demonstration.TRset"));

    const bool valuesAreRight = reportValues(before, marks, after);
    const bool fileIsRight = reportFile(saved, values());
    return valuesAreRight && fileIsRight;
}

void Demonstrator::say(const QString &what) const
{
    print(
        QString("%1 s  %2").arg(static_cast<double>(clock.elapsed()) / 1000, 5, 'f', 1).arg(what));
}

void Demonstrator::take(const QString &picture)
{
    const QString path = pictures.filePath(picture + ".png");
    if (!window.grab().save(path))
        throw std::runtime_error("cannot write " + path.toStdString());
}

void Demonstrator::connect()
{
    say("connecting to " + port);
    click("connect");
    waitFor("connection", [this] { return text("connect") == text::disconnectPort; });
}

/// Runs a sequence to its end. Returns the last green or red mark of each field.
Values Demonstrator::run(const QString &button, const QString &labelInTheEnd,
                         const QString &picture)
{
    Values marks;
    bool taken = false;
    click(button);
    setTick(tickMs);
    const auto ended = [&] {
        for (const Field &field : fields) {
            if (mark(field.name) == mark::green || mark(field.name) == mark::red)
                marks[field.name] = mark(field.name);
        }
        if (!taken && 2 * marks.size() >= fields.size()) {
            take(picture);
            taken = true;
        }
        return text(button) == labelInTheEnd;
    };
    waitFor("end", ended, 60000);
    return marks;
}

Values Demonstrator::values()
{
    Values values{{"conbox0", text("conbox0")}};
    for (const Field &field : fields)
        values[field.name] = text(field.name);
    return values;
}

void Demonstrator::enter(const Values &entered)
{
    for (const Field &field : fields)
        UiDriver::enter(field.name, entered[field.name]);
}

bool Demonstrator::reportValues(const Values &before, const Values &marks, const Values &after)
{
    bool allRight = true;
    print({});
    printRow({"Parameter", "before", "mark", "written", "after", "finding"});
    for (const Field &field : fields) {
        const bool read = marks[field.name] == mark::green;
        const QString written = field.written.isEmpty() ? before[field.name] : field.written;
        const QString expected = field.after.isEmpty() ? written : field.after;
        const bool right = read && after[field.name] == expected;
        QString finding = right ? "ok" : read ? "difference" : "not read";
        if (right && expected != written)
            finding = "ok: only four digits are read";
        printRow({labelOf(find<QWidget>(field.name)).simplified(), before[field.name],
                  read ? "green" : "", field.written, after[field.name], finding});
        allRight = allRight && right;
    }
    return allRight;
}

bool Demonstrator::reportFile(const Values &saved, const Values &loaded)
{
    print({});
    for (auto value = saved.begin(); value != saved.end(); ++value) {
        if (loaded[value.key()] != value.value())
            print(QString("settings file: %1 is \"%2\", saved was \"%3\"")
                      .arg(value.key(), loaded[value.key()], value.value()));
    }
    print(saved == loaded ? "settings file: loaded as saved" : "settings file: DIFFERENT");
    return saved == loaded;
}

/// Returns the exit code.
int demonstrate(const simulator::Options &options, const QDir &pictures, int tickMs,
                int terminationFd)
{
    simulator::SimulatedModule module(options);
    module.setValue("tcp slave id", "17"); // to be overwritten
    try {
        if (!module.start())
            throw std::runtime_error(module.errorString().toStdString());
        Demonstrator demonstrator(options, module.portPath(), tickMs);
        QSocketNotifier notifier(terminationFd, QSocketNotifier::Read);
        QObject::connect(&notifier, &QSocketNotifier::activated, &demonstrator,
                         [&] { demonstrator.abortWait("ended from outside"); });
        return demonstrator.demonstrate(pictures) ? 0 : 1;
    } catch (const std::runtime_error &error) {
        print(QString("FAILED: ") + error.what());
        return 1;
    }
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
    const QDir pictures(parser.value("screenshots"));
    const int tickMs = parser.value("tick").toInt();
    if (tickMs < 1 || !pictures.mkpath("."))
        return simulator::reportStartupError("no such tick or folder", 2);
    // Keep the debug output of the window out of the report.
    QLoggingCategory::setFilterRules("default.debug=false");
    return demonstrate(options, pictures, tickMs, terminationFd);
}
