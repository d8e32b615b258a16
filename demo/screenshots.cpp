// Takes the pictures of the guide: the program's own window, used by object names, with a simulated
// module on its line.

#include "mainwindow.h"
#include "simulated_module.h"
#include "texts.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QEventLoop>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace {

constexpr int tickMs = 150; // nobody has to follow what happens
constexpr int lookMs = 5;
constexpr int limitMs = 20000;
constexpr char portName[] = "ttyUSB0"; ///< shown for the simulated module's path

[[noreturn]] void fail(const QString &reason)
{
    std::fprintf(stderr, "make-screenshots: %s\n", qPrintable(reason));
    std::_Exit(1); // a box may be open, in an event loop of its own
}

void waitFor(const std::function<bool()> &done)
{
    QEventLoop loop;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, [&] {
        if (done())
            loop.quit();
    });
    look.start(lookMs);
    QTimer::singleShot(limitMs, &loop, [] { fail("nothing came of it"); });
    loop.exec();
}

/// A window as a desktop shows it; without one it has neither title nor border.
QPixmap framed(QWidget *window)
{
    constexpr int titleHeight = 28;
    if (QWidget *focus = window->focusWidget())
        focus->clearFocus(); // its cursor is seen at some times only
    const QPixmap content = window->grab();
    QPixmap picture(content.width() + 2, content.height() + titleHeight + 1);
    picture.fill("#8f8f8f");
    QPainter painter(&picture);
    const QRect title(1, 1, content.width(), titleHeight - 1);
    painter.fillRect(title, "#d9dce1");
    painter.drawText(title, Qt::AlignCenter, window->windowTitle());
    painter.drawPixmap(1, titleHeight, content);
    return picture;
}

/// A user with a camera, at a window and a module of their own.
class Scene {
public:
    explicit Scene(ModuleKind kind)
        : module(static_cast<simulator::ModuleKind>(kind))
    {
        module.faults.delayMs = lookMs;
        module.restartMs = limitMs; // off the line for as long as it is looked at
        if (!module.start())
            fail(module.errorString());
        find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(kind));
        ports()->clear();
        ports()->addItem(portName);
        window.show();
        QApplication::processEvents(); // the list of ports takes its width from this name
        QObject::connect(&boxWatch, &QTimer::timeout, [this] { lookForBox(); });
        boxWatch.start(lookMs);
    }

    void click(const char *button) { find<QPushButton>(button)->click(); }
    void trigger(const char *action) { find<QAction>(action)->trigger(); }
    void enter(const char *field, const QString &text) { find<QLineEdit>(field)->setText(text); }
    QString mark(const char *field) { return find<QLineEdit>(field)->styleSheet(); }
    QComboBox *ports() { return find<QComboBox>("serialPortInfoListBox"); }

    void connect()
    {
        ports()->setItemText(0, module.portPath());
        click("connect");
        ports()->setItemText(0, portName);
    }
    /// Clicks on the button that starts a sequence.
    void start(const char *button)
    {
        click(button);
        for (QTimer *timer : window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly)) {
            if (timer->isActive())
                timer->setInterval(tickMs);
        }
    }
    void read()
    {
        start("scan_parameters");
        waitFor([this] { return find<QPushButton>("scan_parameters")->text() == text::scan; });
    }
    void take(const QString &name) { save(framed(&window), name); }
    /// Does what opens a box, which is photographed and closed by its last button.
    void takeBox(const QString &name, const std::function<void()> &act, bool inWindow = false)
    {
        boxName = name;
        boxInWindow = inWindow;
        act();
        waitFor([this] { return boxName.isEmpty(); });
    }

    simulator::SimulatedModule module;

private:
    template <class Object> Object *find(const char *name)
    {
        auto *object = window.findChild<Object *>(name);
        if (!object)
            fail(QString("there is no %1 in the form").arg(name));
        return object;
    }

    void lookForBox()
    {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        if (boxName.isEmpty())
            fail(QString("unexpected box \"%1\": %2").arg(box->windowTitle(), box->text()));
        QPixmap picture = framed(box);
        if (boxInWindow) {
            // Over the buttons, so that the marks of the fields stay in sight.
            const QPixmap boxPicture = picture;
            picture = framed(&window);
            QPainter(&picture).drawPixmap(picture.width() - boxPicture.width() - 20,
                                          picture.height() - boxPicture.height() - 40, boxPicture);
        }
        save(picture, boxName);
        boxName.clear();
        box->buttons().constLast()->click();
    }

    static void save(const QPixmap &picture, const QString &name)
    {
        const QString path = QDir(qApp->arguments().value(1)).filePath(name + ".png");
        if (!picture.save(path))
            fail("cannot write " + path);
    }

    MainWindow window;
    QTimer boxWatch;
    QString boxName; ///< of the picture of the next box; no box may open while it is empty
    bool boxInWindow = false;
};

void takeWindow(ModuleKind kind, const QString &name)
{
    Scene scene(kind);
    scene.connect();
    scene.read();
    scene.take(name);
}

void takeMarks()
{
    Scene scene(ModuleKind::Universal);
    scene.module.faults.answers["SPEED RS485"] = "14400";
    scene.connect();
    scene.start("scan_parameters");
    waitFor([&] { return scene.mark("lineEdit_timewait") == mark::green; });
    scene.take("reading");
}

void takePlainBoxes()
{
    Scene scene(ModuleKind::Universal);
    scene.module.send("\r\n");
    scene.takeBox("box-empty-delivery", [&] { scene.connect(); });
    scene.takeBox("box-factory-reset", [&] { scene.click("reset_allparameters"); });
    scene.takeBox("box-port-lost", [&] { scene.module.hangUp(); });
    scene.takeBox("box-no-file", [&] { scene.trigger("action"); });
    scene.ports()->clear();
    scene.takeBox("box-access-denied", [&] { scene.click("connect"); });
}

void takeSilence()
{
    Scene scene(ModuleKind::Universal);
    scene.module.faults.silent = true;
    scene.connect();
    scene.takeBox("box-no-connection", [&] { scene.start("scan_parameters"); });
}

void takeWrite(int tcpPort, const QString &name)
{
    Scene scene(ModuleKind::Universal);
    scene.connect();
    scene.read();
    scene.enter("lineEdit_portTCP", QString::number(tcpPort));
    scene.takeBox(
        name, [&] { scene.start("applyButton"); }, true);
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    if (argc != 2)
        fail("takes the folder for the pictures");
    // The same pictures on every computer.
    QApplication::setStyle("Fusion");
    QApplication::setFont(QFont("Liberation Sans", 10));
    // The traces of the window are of no use here.
    QLoggingCategory::setFilterRules("default.debug=false");

    takeWindow(ModuleKind::TcpRtu, "tcp-rtu");
    takeWindow(ModuleKind::RtuTcp, "rtu-tcp");
    takeWindow(ModuleKind::Universal, "universal");
    takeMarks();
    takePlainBoxes();
    takeSilence();
    takeWrite(10502, "box-write-succeeded");
    takeWrite(80, "box-write-refused");
    return 0;
}
