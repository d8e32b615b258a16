#include "simulator_options.h"
#include "termination.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTime>

using namespace simulator;

namespace {

QString printable(const QByteArray &bytes)
{
    QByteArray text;
    for (const char byte : bytes) {
        if (byte == '\r')
            text += "\\r";
        else if (byte == '\n')
            text += "\\n";
        else if (byte == '\\')
            text += "\\\\";
        else if (byte >= ' ' && byte <= '~')
            text += byte;
        else
            text += "\\x" + QByteArray(1, byte).toHex();
    }
    return QString::fromLatin1(text);
}

void print(const QString &line)
{
    QTextStream out(stdout);
    out << line << '\n';
}

void log(const QString &event)
{
    print(QTime::currentTime().toString("hh:mm:ss.zzz  ") + event);
}

int refuseToStart(const QString &reason, int exitCode)
{
    QTextStream(stderr) << "module-simulator: " << reason << '\n';
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    constexpr int usageError = 2;

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Simulates a Modbus protocol-converter module on a pseudo-terminal.\n"
        "Prints the path to open as serial port, then every command and reply, until Ctrl-C.");
    // Not addHelpOption(), which offers help on options that this program does not have.
    const QCommandLineOption help({"h", "help"}, "Print the options and exit.");
    parser.addOption(help);
    addOptions(parser);
    // Not process(), which has an exit code of its own for errors.
    if (!parser.parse(QCoreApplication::arguments()))
        return refuseToStart(parser.errorText(), usageError);
    if (parser.isSet(help))
        parser.showHelp();
    if (!parser.positionalArguments().isEmpty())
        return refuseToStart("takes options only; see --help", usageError);
    Options options;
    QString error;
    if (!readOptions(parser, &options, &error))
        return refuseToStart(error, usageError);

    QSocketNotifier end(watchForEnd(), QSocketNotifier::Read);
    QObject::connect(&end, &QSocketNotifier::activated, &application, &QCoreApplication::quit);

    SimulatedModule module(options.kind, options.linkPath);
    module.faults = options.faults;
    module.restartMs = options.restartMs;
    QObject::connect(&module, &SimulatedModule::commandReceived,
                     [](const QByteArray &command) { log("command  " + printable(command)); });
    QObject::connect(&module, &SimulatedModule::replySent,
                     [](const QByteArray &reply) { log("reply    " + printable(reply)); });
    QObject::connect(&module, &SimulatedModule::wentOff, [] { log("off the line"); });
    QObject::connect(&module, &SimulatedModule::cameBack, [] { log("back on the line"); });
    if (!module.start())
        return refuseToStart(module.errorString(), 1);

    print(module.portPath());
    return QCoreApplication::exec();
}
