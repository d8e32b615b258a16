// Linked into a program, prints how many milliseconds after its start the first frame of its window
// was painted.
//
// The first argument is the time just before the start, in seconds since the epoch; that is the
// only precise clock that a shell can read without starting a program for it. The program ends with
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
    std::printf("%.3f\n", now.count() - given.value(1).toDouble() * 1000);
    std::fflush(stdout);
    // Taking the window down would count as instructions of its start.
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
            // The frame goes to the display at the end of the event that had it painted.
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), Qt::HighEventPriority);
            qApp->removeEventFilter(this);
        }
        return false;
    }
    void customEvent(QEvent * /*event*/) override { report(); }
};

/// The programs' own main() knows nothing of this.
void watchForFirstFrame()
{
    qApp->installEventFilter(new FirstFrameWatch(qApp));
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watchForFirstFrame)
