#include "mainwindow.h"

#include <QAbstractButton>
#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

// What a read costs the window: ticks that send a query and replies that end as a painted field.
// Simulated modules answer at the far ends, in processes of their own, so what this thread spends
// is the window's alone.

namespace {

constexpr char greenMark[] = "background-color:  #90ee90;";

class PaintWatch : public QObject {
public:
    bool fieldPainted = false;

    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            fieldPainted = fieldPainted || qobject_cast<QLineEdit *>(object)
                || qobject_cast<QComboBox *>(object);
        return false;
    }
};

double threadMicroseconds()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e6 + static_cast<double>(used.tv_nsec) / 1e3;
}

void handleEvents()
{
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) { }
}

/// False if it takes so long that something must be wrong.
template <class Condition> bool waitFor(const Condition &condition)
{
    QTimer patience;
    patience.setSingleShot(true);
    patience.start(5000);
    while (!condition() && patience.isActive())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    handleEvents();
    return condition();
}

void tick(QTimer *timer)
{
    QTimerEvent event(timer->timerId());
    QCoreApplication::sendEvent(timer, &event);
}

double median(std::vector<double> *values)
{
    const auto middle = values->begin() + static_cast<std::ptrdiff_t>(values->size() / 2);
    std::nth_element(values->begin(), middle, values->end());
    return *middle;
}

/// The floor of a reply: one field alone in a window, given the same text and mark.
class LoneField {
public:
    LoneField()
    {
        window.setCentralWidget(field);
        window.move(800, 0); // beside the other window
        window.show();
    }

    double showReply(PaintWatch *watch)
    {
        field->clear();
        field->setStyleSheet(QString());
        handleEvents();
        watch->fieldPainted = false;
        const double start = threadMicroseconds();
        field->setText("192.168.100.200");
        field->setStyleSheet(greenMark);
        waitFor([watch] { return watch->fieldPainted; });
        return threadMicroseconds() - start;
    }

private:
    QMainWindow window;
    QLineEdit *field = new QLineEdit;
};

/// The floor of a tick: a port alone that a timer has send a query.
class LonePort {
public:
    explicit LonePort(const QString &name)
    {
        port.setPortName(name);
        port.open(QIODevice::ReadWrite);
        timer.setInterval(3600 * 1000);
        QObject::connect(&timer, &QTimer::timeout, &port, [this] { port.write("GATEWAY"); });
        timer.start();
    }

    /// Negative if the module did not answer.
    double send()
    {
        const double start = threadMicroseconds();
        tick(&timer);
        handleEvents();
        const double cost = threadMicroseconds() - start;
        const bool answered = waitFor([this] { return port.bytesAvailable() > 0; });
        port.readAll();
        return answered ? cost : -1;
    }

private:
    QSerialPort port;
    QTimer timer;
};

QTimer *activeTimerOf(const QObject &window)
{
    const auto timers = window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    const auto active =
        std::find_if(timers.begin(), timers.end(), [](QTimer *timer) { return timer->isActive(); });
    return active == timers.end() ? nullptr : *active;
}

/// On the standard output, for the other one is the window's debug log.
int fail(const char *what)
{
    std::printf("bench-dialogue: %s\n", what);
    return 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets);
    QApplication application(argc, argv);
    const QStringList given = QCoreApplication::arguments();
    if (given.size() != 4)
        return fail(
            "takes two ports, each with a simulated universal module, and a number of reads");

    PaintWatch watch;
    application.installEventFilter(&watch);
    MainWindow window;
    window.setFixedSize(754, 550);
    window.show();
    LoneField loneField;
    LonePort lonePort(given.at(2));

    window.findChild<QComboBox *>("conbox0")->setCurrentIndex(2);
    auto *ports = window.findChild<QComboBox *>("serialPortInfoListBox");
    ports->addItem(given.at(1));
    ports->setCurrentText(given.at(1));
    window.findChild<QAbstractButton *>("connect")->click();

    std::vector<double> ticks;
    std::vector<double> replies;
    std::vector<double> lonePortTicks;
    std::vector<double> loneFieldReplies;
    for (int read = 0; read < given.at(3).toInt(); ++read) {
        window.findChild<QAbstractButton *>("scan_parameters")->click();
        QTimer *timer = activeTimerOf(window);
        if (!timer)
            return fail("no read started");
        timer->setInterval(3600 * 1000); // from here on, time passes by ticks of ours
        handleEvents();
        while (true) {
            watch.fieldPainted = false;
            const double start = threadMicroseconds();
            tick(timer);
            handleEvents();
            const double sent = threadMicroseconds();
            if (!timer->isActive())
                break; // that one ended the read
            // Sleep costs nothing, so this is what it takes from the arrival of the reply on.
            if (!waitFor([&watch] { return watch.fieldPainted; }))
                return fail("no reply");
            replies.push_back(threadMicroseconds() - sent);
            ticks.push_back(sent - start);

            loneFieldReplies.push_back(loneField.showReply(&watch));
            const double lonePortTick = lonePort.send();
            if (lonePortTick < 0)
                return fail("no reply on the second port");
            lonePortTicks.push_back(lonePortTick);
        }
    }
    std::printf("%.1f %.1f %.1f %.1f %s\n", median(&replies), median(&loneFieldReplies),
                median(&ticks), median(&lonePortTicks), qVersion());
    return 0;
}
