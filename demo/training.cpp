// The configurator with a simulated module at the last port of its list, to try it out with.

#include "simulator_options.h"
#include "termination.h"
#include "user.h"

#include <QApplication>
#include <QComboBox>
#include <QCommandLineParser>
#include <QSocketNotifier>

int main(int argc, char *argv[])
{
    // Before the application starts threads, which would die of the signals.
    const int end = simulator::watchForEnd();

    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets); // as in the program itself
    QApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Shows the configurator with a simulated module at the last port of its list.");
    simulator::SimulatedModule module(simulator::processOptions(parser));

    QSocketNotifier notifier(end, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &QApplication::quit);

    if (!module.start())
        return simulator::refuseToStart(module.errorString(), 1);

    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.findChild<QComboBox *>("conbox0")->setCurrentIndex(static_cast<int>(module.kind()));
    offerPort(&window, module.portPath());
    window.show();
    return QApplication::exec();
}
