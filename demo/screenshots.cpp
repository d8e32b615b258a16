// Takes the screenshots of the guide, with a simulated module.

#include "application.h"
#include "simulated_module.h"
#include "texts.h"
#include "ui_driver.h"

#include <QComboBox>
#include <QDir>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPainter>

#include <cstdio>
#include <stdexcept>

namespace {

constexpr int tickMs = 150;            // short, because nobody watches
constexpr char portName[] = "ttyUSB0"; ///< shown instead of the simulated module's path

/// A screenshot with title and border, which a window has only on a desktop.
QPixmap framed(QWidget *window)
{
    constexpr int titleHeight = 28;
    if (QWidget *focus = window->focusWidget())
        focus->clearFocus(); // its cursor blinks
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

void save(const QPixmap &picture, const QString &name)
{
    const QString path = QDir(qApp->arguments().value(1)).filePath(name + ".png");
    if (!picture.save(path))
        throw std::runtime_error("cannot write " + path.toStdString());
}

class ScreenshotTaker : public UiDriver {
public:
    explicit ScreenshotTaker(ModuleKind kind)
        : module(simulator::Options{static_cast<simulator::ModuleKind>(kind)})
    {
        module.faults.delayMs = 5;
        module.restartMs = 60000; // long enough to stay disconnected
        if (!module.start())
            throw std::runtime_error(module.errorString().toStdString());
        find<QComboBox>("conbox0")->setCurrentIndex(static_cast<int>(kind));
        ports()->clear();
        ports()->addItem(portName);
        window.show();
        Application::processEvents(); // the port list adapts its width to this name
        onBox = [this](QMessageBox *box) { captureBox(box); };
    }

    QComboBox *ports() { return find<QComboBox>("serialPortInfoListBox"); }

    void connect()
    {
        ports()->setItemText(0, module.portPath());
        click("connect");
        ports()->setItemText(0, portName);
    }
    void start(const QString &button)
    {
        click(button);
        setTick(tickMs);
    }
    void read()
    {
        start("scan_parameters");
        waitFor("end of the read", [this] { return text("scan_parameters") == text::scan; });
    }
    void capture(const QString &name) { save(framed(&window), name); }
    /// Calls act(), which opens a box, and captures that box; with inWindow, in front of the
    /// window.
    void captureBox(const QString &name, const std::function<void()> &act, bool inWindow = false)
    {
        boxName = name;
        boxInWindow = inWindow;
        act();
        waitFor("box " + name, [this] { return boxName.isEmpty(); });
    }

    simulator::SimulatedModule module;

private:
    void captureBox(QMessageBox *box)
    {
        if (boxName.isEmpty())
            abortWait("unexpected box \"" + boxes.last() + '"');
        QPixmap picture = framed(box);
        if (boxInWindow) {
            // Over the buttons, so that the marks stay visible.
            const QPixmap boxPicture = picture;
            picture = framed(&window);
            QPainter(&picture).drawPixmap(picture.width() - boxPicture.width() - 20,
                                          picture.height() - boxPicture.height() - 40, boxPicture);
        }
        save(picture, boxName);
        boxName.clear();
    }

    QString boxName; ///< file name for the next box; while it is empty, no box may open
    bool boxInWindow = false;
};

void captureWindow(ModuleKind kind, const QString &name)
{
    ScreenshotTaker taker(kind);
    taker.connect();
    taker.read();
    taker.capture(name);
}

void captureReading()
{
    ScreenshotTaker taker(ModuleKind::Universal);
    taker.module.faults.reportedValues["SPEED RS485"] = "14400";
    taker.connect();
    taker.start("scan_parameters");
    taker.waitFor("reply", [&] { return taker.mark("lineEdit_timewait") == mark::green; });
    taker.capture("reading");
}

void capturePlainBoxes()
{
    ScreenshotTaker taker(ModuleKind::Universal);
    taker.module.send("\r\n");
    taker.captureBox("box-empty-delivery", [&] { taker.connect(); });
    taker.captureBox("box-factory-reset", [&] { taker.click("reset_allparameters"); });
    taker.captureBox("box-port-lost", [&] { taker.module.hangUp(); });
    taker.captureBox("box-no-file", [&] { taker.trigger("action"); });
    taker.ports()->clear();
    taker.captureBox("box-access-denied", [&] { taker.click("connect"); });
}

void captureNoConnectionBox()
{
    ScreenshotTaker taker(ModuleKind::Universal);
    taker.module.faults.silent = true;
    taker.connect();
    taker.captureBox("box-no-connection", [&] { taker.start("scan_parameters"); });
}

void captureWriteBox(const QString &tcpPort, const QString &name)
{
    ScreenshotTaker taker(ModuleKind::Universal);
    taker.connect();
    taker.read();
    taker.enter("lineEdit_portTCP", tcpPort);
    const auto write = [&] { taker.start("applyButton"); };
    taker.captureBox(name, write, true);
}

} // namespace

int main(int argc, char *argv[])
{
    Application application(argc, argv);
    // The same screenshots on every computer.
    Application::setStyle("Fusion");
    Application::setFont(QFont("Liberation Sans", 10));
    QLoggingCategory::setFilterRules("default.debug=false\ndefault.warning=false");
    try {
        if (argc != 2)
            throw std::runtime_error("takes the folder for the pictures");
        captureWindow(ModuleKind::TcpRtu, "tcp-rtu");
        captureWindow(ModuleKind::RtuTcp, "rtu-tcp");
        captureWindow(ModuleKind::Universal, "universal");
        captureReading();
        capturePlainBoxes();
        captureNoConnectionBox();
        captureWriteBox("10502", "box-write-succeeded");
        captureWriteBox("80", "box-write-refused");
    } catch (const std::runtime_error &error) {
        std::fprintf(stderr, "make-screenshots: %s\n", error.what());
        return 1;
    }
    return 0;
}
