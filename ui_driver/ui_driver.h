#pragma once

#include "mainwindow.h"

#include <QTemporaryDir>
#include <QTimer>

#include <functional>

class QFileDialog;
class QMessageBox;

/// Somebody who uses the window: finds its parts by the names that they have in the form, clicks,
/// types, looks, waits, and deals with the message boxes and file dialogs that open.
///
/// What is not there, or does not come, is thrown as a std::runtime_error.
class UiDriver : public QObject {
public:
    UiDriver(); ///< in front of the window as it starts

    template <class Object> Object *find(const QString &name)
    {
        auto *object = window.findChild<Object *>(name);
        if (!object)
            fail("there is no " + name);
        return object;
    }

    void choosePort(const QString &port); ///< also one that is not on the list
    void click(const QString &button);
    /// Uses a command of the menu. A file dialog is given the path, which it has to take, or
    /// cancelled for want of one.
    void trigger(const QString &action, const QString &path = QString());
    /// Into a line edit; the item of a combo box that says so; "checked" or "unchecked".
    void enter(const QString &field, const QString &value);

    /// What it says, in the words of enter() if it is a field.
    QString text(const QString &name);
    static QString labelOf(QWidget *field); ///< as screen readers have it
    QString mark(const QString &field);     ///< style sheet
    bool isEnabled(const QString &name);
    bool isVisible(const QString &name);

    void waitFor(const QString &what, const std::function<bool()> &done, int limitMs = 30000);
    bool waitUntil(const std::function<bool()> &done, int limitMs); ///< instead of throwing
    /// Ends the next, or the present, waitFor() or trigger().
    void abortWait(const QString &reason) { failure = reason; }
    void setTick(int ms); ///< of the sequences that are running, instead of a second

    /// Called for each box that opens, while it is open; then the box is closed.
    std::function<void(QMessageBox *)> onBox;
    QString boxAnswer; ///< the button that closes boxes that have one of this text, or "Esc"
    bool leavesDialogsOpen = false;
    QStringList boxes;       ///< "icon: title: text" of each that opened
    QStringList fileDialogs; ///< "title: filters" of each that opened

    MainWindow window;
    const QList<QTimer *> timers; ///< of the sequences: read, write, read, write

    /// Gives it the path, or cancels it for want of one. Whether the dialog took that.
    static bool answer(QFileDialog *dialog, const QString &path);

private:
    [[noreturn]] static void fail(const QString &reason);
    void pollDialogs();

    QString nextPath;
    QString failure;
    const QTemporaryDir
        settingsFolder; ///< instead of the user's own, of what file dialogs were given
};
