// The training copy: the configurator with a simulated module as the last port of its list.

#include "application.h"
#include "mainwindow.h"
#include "simulator_options.h"
#include "termination.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCommandLineParser>
#include <QSocketNotifier>

/// Accepts the options of all Qt programs, which QApplication reads itself.
static void addOptionsOfQt(QCommandLineParser *parser)
{
    QList<QCommandLineOption> options{QCommandLineOption("reverse"), QCommandLineOption("nograb"),
                                      QCommandLineOption("dograb")};
    for (const char *name :
         {"platform", "platformpluginpath", "platformtheme", "plugin", "style", "stylesheet",
          "qwindowgeometry", "geometry", "qwindowicon", "icon", "qwindowtitle", "title", "session",
          "display", "name", "visual", "qmljsdebugger"})
        options.append(QCommandLineOption(name, {}, name));
    for (QCommandLineOption &option : options)
        option.setFlags(QCommandLineOption::HiddenFromHelp);
    parser->addOptions(options);
    parser->setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
}

/// Uses no QApplication, which aborts without a display: --help must work there too.
static simulator::Options readOptions(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Shows the configurator with a simulated module as the last port of its list.\n"
        "Accepts Qt's own options too, such as -platform and -style.");
    addOptionsOfQt(&parser);
    return simulator::processOptions(parser);
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
    const simulator::Options options = readOptions(argc, argv);
    // Before the application starts threads.
    const int terminationFd = simulator::openTerminationFd();

    Application application(argc, argv);
    simulator::SimulatedModule module(options);

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
