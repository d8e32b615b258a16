// The configurator with a simulated module at the last port of its list, to try it out with.

#include "application.h"
#include "mainwindow.h"
#include "simulator_options.h"
#include "termination.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QCommandLineParser>
#include <QSocketNotifier>

/// Those that Qt takes of every program with a window, on X11 too; Qt reads them itself.
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

/// Help has to come without a display too, where a window's application would abort.
static simulator::Options readOptions(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Shows the configurator with a simulated module at the last port of its list.\n"
        "Qt's own options are taken too, such as -platform and -style.");
    addOptionsOfQt(&parser);
    return simulator::processOptions(parser);
}

/// Puts a port on the window's list, now and whenever that is filled anew, and selects it.
static void offerPort(MainWindow *window, const QString &port)
{
    auto *ports = window->findChild<QComboBox *>("serialPortInfoListBox");
    const auto offer = [ports, port] {
        ports->addItem(port);
        ports->setCurrentIndex(ports->count() - 1);
    };
    offer();
    // The window's own slot has refilled the list by then.
    QObject::connect(window->findChild<QAbstractButton *>("scanport"), &QAbstractButton::clicked,
                     window, offer);
}

int main(int argc, char *argv[])
{
    const simulator::Options options = readOptions(argc, argv);
    // Before the application starts threads, which would die of the signals.
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
