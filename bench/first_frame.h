#pragma once

#include <QApplication>

/// An application that tells how long after the start of the program its first frame was painted.
///
/// The first argument is the time just before the start, in seconds since the epoch; that is the
/// only precise clock that a shell can read without starting a program for it. The application ends
/// with its first frame, unless the second argument is "stay".
class FirstFrameApplication : public QApplication {
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override;

private:
    void report();

    int depth = 0;
    bool painted = false;
    bool reported = false;
};
