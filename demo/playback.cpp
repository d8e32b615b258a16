#include "playback.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

#include <cstdio>

namespace {

constexpr int lookIntervalMs = 20;
constexpr qint64 msPerSecond = 1000;

} // namespace

void print(const QString &line)
{
    // The texts of the form are no less readable in a locale that has no Cyrillic letters.
    std::fputs((line + '\n').toUtf8().constData(), stdout);
    std::fflush(stdout);
}

QMessageBox *openBox()
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

QFileDialog *openFileDialog()
{
    return qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
}

Playback::Playback()
{
    lookTimer.setInterval(lookIntervalMs);
    connect(&lookTimer, &QTimer::timeout, this, &Playback::look);
}

void Playback::start()
{
    clock.start();
    current = 0;
    begin();
}

void Playback::begin()
{
    // Not from within look(): a timer is mute while its own slot runs, and an act may go on until
    // a later step closes the window that it has opened.
    const auto act = [this] {
        const Step step = steps.at(current);
        if (!step.title.isEmpty())
            report(step.title);
        stepClock.start();
        lookTimer.start();
        step.act();
    };
    QMetaObject::invokeMethod(this, act, Qt::QueuedConnection);
}

void Playback::look()
{
    const Step &step = steps.at(current);
    if (QMessageBox *box = openBox(); box && !isExpected(box)) {
        const QString reason =
            QString("unexpected message box \"%1\": %2").arg(box->windowTitle(), box->text());
        box->close();
        fail(reason);
    } else if (step.done()) {
        lookTimer.stop();
        if (++current < steps.size())
            begin();
        else
            emit ended(true);
    } else if (stepClock.hasExpired(msPerSecond * step.limitSeconds)) {
        fail(QString("nothing came of it within %1 s").arg(step.limitSeconds));
    }
}

bool Playback::isExpected(const QMessageBox *box) const
{
    const Box &expected = steps.at(current).box;
    return box->windowTitle() == expected.title && box->text() == expected.text;
}

void Playback::fail(const QString &reason)
{
    lookTimer.stop();
    report("FAILED: " + reason);
    emit ended(false);
}

void Playback::report(const QString &line) const
{
    const double seconds = static_cast<double>(clock.elapsed()) / msPerSecond;
    print(QString("%1 s  %2").arg(seconds, 5, 'f', 1).arg(line));
}
