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

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Simulates a Modbus protocol-converter module on a pseudo-terminal.\n"
        "Prints the path to open as serial port, then every command and reply, until Ctrl-C.");
    SimulatedModule module(processOptions(parser));

    QSocketNotifier end(openTerminationFd(), QSocketNotifier::Read);
    QObject::connect(&end, &QSocketNotifier::activated, &application, &QCoreApplication::quit);

    QObject::connect(&module, &SimulatedModule::commandReceived,
                     [](const QByteArray &command) { log("command  " + printable(command)); });
    QObject::connect(&module, &SimulatedModule::deliverySent,
                     [](const QByteArray &delivery) { log("reply    " + printable(delivery)); });
    QObject::connect(&module, &SimulatedModule::disconnected, [] { log("disconnected"); });
    QObject::connect(&module, &SimulatedModule::reconnected, [] { log("reconnected"); });
    if (!module.start())
        return reportStartupError(module.errorString(), 1);

    print(module.portPath());
    return QCoreApplication::exec();
}
