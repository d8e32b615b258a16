// The training copy: the configurator with a simulated module as the last port of its list.

#include "application.h"
#include "mainwindow.h"
#include "simulator_options.h"
#include "termination.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCommandLineParser>
#include <QSocketNotifier>

#include <algorithm>

static simulator::Options processOptions()
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Shows the configurator with a simulated module as the last port of its list.\n"
        "Accepts Qt's own options too, such as -platform and -style.");
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions); // as Qt's own are
    return simulator::processOptions(parser);
}

/// Prints the options and exits, if help is requested. Without an Application, which aborts if
/// there is no display.
static void processHelp(int argc, char *argv[])
{
    const auto isHelp = [](const char *argument) {
        return qstrcmp(argument, "-h") == 0 || qstrcmp(argument, "--help") == 0;
    };
    char **const help = std::find_if(argv, argv + argc, isHelp);
    if (help == argv + argc)
        return;
    char *withoutQtOptions[] = {argv[0], *help, nullptr};
    int count = 2;
    const QCoreApplication application(count, withoutQtOptions);
    processOptions();
}

/// Adds a port to the window's list and selects it, now and after each refresh.
static void offerPort(MainWindow *window, const QString &port)
{
    auto *ports = window->findChild<QComboBox *>("serialPortInfoListBox");
    const auto offer = [ports, port] {
        ports->addItem(port);
        ports->setCurrentIndex(ports->count() - 1);
    };
    offer();
    // Called after the window's own slot, which refills the list.
    QObject::connect(window->findChild<QAbstractButton *>("scanport"), &QAbstractButton::clicked,
                     window, offer);
}

int main(int argc, char *argv[])
{
    processHelp(argc, argv);
    // Before the application starts threads.
    const int terminationFd = simulator::openTerminationFd();

    Application application(argc, argv);
    simulator::SimulatedModule module(processOptions());

    QSocketNotifier notifier(terminationFd, QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &Application::quit);

    if (!module.start())
        return simulator::reportStartupError(module.errorString(), 1);

    MainWindow window;
    window.setFixedSize(MainWindow::startSize);
    window.findChild<QComboBox *>("conbox0")->setCurrentIndex(static_cast<int>(module.kind()));
    offerPort(&window, module.portPath());
    window.show();
    return Application::exec();
}
