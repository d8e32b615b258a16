#pragma once

#include <QElapsedTimer>
#include <QTimer>
#include <QVector>

#include <functional>

class QFileDialog;
class QMessageBox;

void print(const QString &line);

/// The message box or file dialog that is open, if any.
QMessageBox *openBox();
QFileDialog *openFileDialog();

/// Plays a user: acts, waits for what is to follow from it, then goes on to the next step.
class Playback : public QObject {
    Q_OBJECT

public:
    struct Box {
        QString title;
        QString text;
    };
    struct Step {
        QString title;             ///< printed as the step begins, unless empty
        std::function<void()> act; ///< may open a modal window and return only when it is closed
        std::function<bool()> done;
        int limitSeconds = 30;
        Box box = {}; ///< the one that may be open; any other is a failure
    };

    Playback();

    void add(const Step &step) { steps.append(step); }
    void start();
    /// Ends the playback early.
    void fail(const QString &reason);

signals:
    void ended(bool succeeded);

private:
    void begin();
    void look();
    bool isExpected(const QMessageBox *box) const;
    void report(const QString &line) const;

    QVector<Step> steps;
    int current = -1;
    QTimer lookTimer;
    QElapsedTimer stepClock;
    QElapsedTimer clock;
};
