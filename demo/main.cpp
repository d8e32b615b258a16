#include "demonstration.h"
#include "mainwindow.h"
#include "simulator_options.h"
#include "termination.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLoggingCategory>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTextStream>

namespace {

int refuseToStart(const QString &reason)
{
    QTextStream(stderr) << "configurator-with-simulator: " << reason << '\n';
    return 2;
}

void offerPort(const Form &form, const QString &path)
{
    QComboBox *ports = form.find(&Names::serialPortInfoListBox);
    ports->addItem(path);
    ports->setCurrentIndex(ports->count() - 1);
}

int playUser(Form *form, const QString &screenshots)
{
    if (!QDir().mkpath(screenshots))
        return refuseToStart("cannot make the folder " + screenshots);
    // The traces of the window would drown the report.
    QLoggingCategory::setFilterRules("default.debug=false");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);

    Demonstration demonstration(form, screenshots);
    // Ended from outside, it has not shown that all is right.
    int exitCode = 1;
    QObject::connect(&demonstration, &Demonstration::ended, form, [&exitCode](bool allRight) {
        exitCode = allRight ? 0 : 1;
        QCoreApplication::quit();
    });
    demonstration.start();
    QCoreApplication::exec();
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
    // Before the application starts threads, which would die of the signals.
    const int end = simulator::watchForEnd();

    QApplication application(argc, argv);
    // Part of the path of the module's port, for which the form has little room.
    QApplication::setApplicationName("demo");
    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Shows the configurator with a simulated module on its last serial port.");
    parser.addHelpOption();
    simulator::addOptions(parser);
    parser.addOptions({
        {"headless", "Play a user: read, write, save and load; report and exit."},
        {"screenshots", "Folder for the pictures that --headless takes (the current one).",
         "folder", "."},
    });
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
    window.setFixedSize(754, 550);
    Form form(&window);
    form.find(&Names::conbox0)->setCurrentIndex(static_cast<int>(options.kind));
    offerPort(form, module.portPath());
    // The window's own slot has refilled the list by then.
    QObject::connect(form.find(&Names::scanport), &QPushButton::clicked, &form,
                     [&] { offerPort(form, module.portPath()); });
    window.show();

    if (!parser.isSet("headless"))
        return QApplication::exec();
    // So that switching it off is something to see.
    module.setValue("tcp slave id", "17");
    return playUser(&form, parser.value("screenshots"));
}
