// The configurator with a simulated module at the last port of its list, to try it out with.

#include "simulator_options.h"
#include "termination.h"
#include "user.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QSocketNotifier>

#include <cstdio>

namespace {

int refuseToStart(const QString &reason)
{
    std::fprintf(stderr, "%s: %s\n", qPrintable(QCoreApplication::applicationName()),
                 qPrintable(reason));
    return 2;
}

} // namespace

int main(int argc, char *argv[])
{
    // Before the application starts threads, which would die of the signals.
    const int end = simulator::watchForEnd();

    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Shows the configurator with a simulated module at the last port of its list.");
    parser.addHelpOption();
    simulator::addOptions(parser);
    parser.process(application);
    simulator::Options options;
    QString error;
    if (!readOptions(parser, &options, &error))
        return refuseToStart(error);

    QSocketNotifier notifier(end, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &QApplication::quit);

    simulator::SimulatedModule module(options.kind, options.linkPath);
    module.faults = options.faults;
    module.restartMs = options.restartMs;
    if (!module.start())
        return refuseToStart(module.errorString());

    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.findChild<QComboBox *>("conbox0")->setCurrentIndex(static_cast<int>(options.kind));
    offerPort(&window, module.portPath());
    window.show();
    return QApplication::exec();
}
