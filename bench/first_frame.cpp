// Linked into a program, prints the time from its start to the first frame of its window, in ms,
// and the version of Qt.
//
// The first argument is the time just before the start, in seconds since the epoch, because that is
// the only precise clock that a shell can read without starting a program. The program exits after
// its first frame, unless the second argument is "stay".

#include <QCoreApplication>
#include <QEvent>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

void report()
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const Milliseconds now = std::chrono::system_clock::now().time_since_epoch();
    const QStringList given = QCoreApplication::arguments();
    std::printf("%.3f %s\n", now.count() - given.value(1).toDouble() * 1000, qVersion());
    std::fflush(stdout);
    // Exit at once, because destroying the window would be measured as well.
    if (given.value(2) != "stay")
        std::_Exit(0);
}

class FirstFrameWatch : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && receiver->isWidgetType()
            && static_cast<QWidget *>(receiver)->isWindow()) {
            // The frame reaches the display at the end of the event that painted it.
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
            qApp->removeEventFilter(this);
        }
        return false;
    }
    void customEvent(QEvent * /*event*/) override { report(); }
};

/// Runs when a QCoreApplication is created, so that main() need not be changed.
void watchForFirstFrame()
{
    qApp->installEventFilter(new FirstFrameWatch(qApp));
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForFirstFrame)
