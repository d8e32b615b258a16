#include "simulator_options.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QTextStream>

#include <cstdlib>

namespace simulator {

namespace {

const QMap<QString, ModuleKind> kinds{
    {"tcp-rtu", ModuleKind::TcpRtu},
    {"rtu-tcp", ModuleKind::RtuTcp},
    {"universal", ModuleKind::Universal},
};

QString kindNames()
{
    return kinds.keys().join(", ");
}

bool readKind(const QCommandLineParser &parser, ModuleKind *kind, QString *error)
{
    const QString name = parser.value("kind");
    *kind = kinds.value(name);
    if (!kinds.contains(name))
        *error = QString("no kind \"%1\"; there are: %2").arg(name, kindNames());
    return error->isEmpty();
}

/// Keeps the number if the option is not given.
bool readNumber(const QCommandLineParser &parser, const QString &option, int lowest, int *number,
                QString *error)
{
    if (!parser.isSet(option))
        return true;
    bool isNumber = false;
    *number = parser.value(option).toInt(&isNumber);
    if (!isNumber || *number < lowest)
        *error = QString("--%1 takes a whole number of %2 or more").arg(option).arg(lowest);
    return error->isEmpty();
}

bool checkParameter(ModuleKind kind, const QByteArray &name, QString *error)
{
    const QList<QByteArray> known = queriesOf(kind).toList();
    if (!known.contains(name))
        *error = QString("no parameter \"%1\" in this kind of module; there are: %2")
                     .arg(QString(name), QString(known.join(", ")));
    return error->isEmpty();
}

bool readRefusal(const QCommandLineParser &parser, Options *options, QString *error)
{
    options->faults.refuse = parser.value("refuse").toUtf8();
    return !parser.isSet("refuse") || checkParameter(options->kind, options->faults.refuse, error);
}

bool readReportedValues(const QCommandLineParser &parser, Options *options, QString *error)
{
    const QStringList reports = parser.values("report");
    for (const QString &report : reports) {
        const QByteArray text = report.toUtf8();
        const auto equals = text.indexOf('=');
        if (equals < 0)
            *error = QString("--report takes NAME=VALUE, not \"%1\"").arg(report);
        else if (checkParameter(options->kind, text.left(equals), error))
            options->faults.reportedValues.insert(text.left(equals), text.mid(equals + 1));
    }
    return error->isEmpty();
}

void addOptions(QCommandLineParser &parser)
{
    const Options defaults;
    const QString kind = kinds.key(defaults.kind);
    parser.addOptions({
        {"kind", QString("Kind of module: %1 (%2).").arg(kindNames(), kind), "name", kind},
        {"link", "Make the port available under this path.", "path"},
        {"silent", "Execute commands, but do not reply."},
        {"delay", QString("Time from a command to its reply (%1 ms).").arg(defaults.faults.delayMs),
         "ms"},
        {"refuse", "Refuse writes to this parameter, e.g. \"PORT TCP\".", "name"},
        {"split", "Send each reply in two parts."},
        {"empty", "Send an empty line before each reply."},
        {"garbage", "Send line noise before each reply."},
        {"hang-up-after", "Hang up permanently on receiving the N-th command.", "N"},
        {"flood", "After each command, send line noise without pause for this long.", "ms"},
        {"report", "Report this value of a parameter, e.g. \"ip=1.2.3.4\". May be repeated.",
         "name=value"},
        {"restart-time",
         QString("How long the module stays disconnected during a restart (%1 ms).")
             .arg(defaults.restartMs),
         "ms"},
    });
}

/// Returns false and sets error, a message for the user, if an option has an invalid value.
bool readOptions(const QCommandLineParser &parser, Options *options, QString *error)
{
    Faults &faults = options->faults;
    error->clear();
    options->linkPath = parser.value("link");
    faults.silent = parser.isSet("silent");
    faults.split = parser.isSet("split");
    faults.empty = parser.isSet("empty");
    faults.garbage = parser.isSet("garbage");
    // First, because the parameters depend on it.
    return readKind(parser, &options->kind, error)
        && readNumber(parser, "delay", 0, &faults.delayMs, error)
        && readNumber(parser, "hang-up-after", 1, &faults.hangUpAfter, error)
        && readNumber(parser, "flood", 0, &faults.floodMs, error)
        && readNumber(parser, "restart-time", 0, &options->restartMs, error)
        && readRefusal(parser, options, error) && readReportedValues(parser, options, error);
}

} // namespace

Options processOptions(QCommandLineParser &parser)
{
    constexpr int usageError = 2;
    // From Qt 5.14 on, addHelpOption() would also add --help-all, which lists the options of Qt.
    // module-simulator has none.
    const QCommandLineOption help({"h", "help"}, "Print the options and exit.");
    parser.addOption(help);
    addOptions(parser);
    Options options;
    QString error;
    if (!parser.parse(QCoreApplication::arguments()))
        error = parser.errorText();
    else if (parser.isSet(help))
        parser.showHelp();
    else if (!parser.positionalArguments().isEmpty())
        error = "takes options only; see --help";
    else
        readOptions(parser, &options, &error);
    if (!error.isEmpty())
        std::exit(reportStartupError(error, usageError));
    return options;
}

int reportStartupError(const QString &reason, int exitCode)
{
    const QString program = QFileInfo(QCoreApplication::applicationFilePath()).fileName();
    QTextStream(stderr) << program << ": " << reason << '\n';
    return exitCode;
}

} // namespace simulator
