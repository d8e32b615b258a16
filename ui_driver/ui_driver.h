#pragma once

#include "mainwindow.h"

#include <QTemporaryDir>
#include <QTimer>

#include <functional>

class QFileDialog;
class QMessageBox;

/// Operates the window through its widgets, found by object name: clicks, enters values, reads,
/// waits, closes message boxes and answers file dialogs.
///
/// Throws std::runtime_error if a widget does not exist or an expected event does not occur.
class UiDriver : public QObject {
public:
    UiDriver();

    template <class Object> Object *find(const QString &name)
    {
        auto *object = window.findChild<Object *>(name);
        if (!object)
            fail("there is no " + name);
        return object;
    }

    void choosePort(const QString &port); ///< adds it to the list if necessary
    void click(const QString &button);
    /// Triggers a menu action. Answers its file dialog with the path, or cancels it if the path is
    /// empty.
    void trigger(const QString &action, const QString &path = QString());
    /// Sets the text of a line edit, the item of a combo box with that text, or a check box to
    /// "checked" or "unchecked".
    void enter(const QString &field, const QString &value);

    /// The text of a button, label or status bar; of a field, the value as enter() takes it. Of a
    /// combo box without a current item, "(no item)".
    QString text(const QString &name);
    static QString labelOf(QWidget *field); ///< as screen readers see it
    QString mark(const QString &field);     ///< style sheet
    bool isEnabled(const QString &name);
    bool isVisible(const QString &name);

    void waitFor(const QString &what, const std::function<bool()> &done, int limitMs = 30000);
    bool waitUntil(const std::function<bool()> &done, int limitMs); ///< returns false on timeout
    /// Makes the current or the next waitFor() or trigger() throw.
    void abortWait(const QString &reason) { failure = reason; }
    void setTick(int ms); ///< interval of the active timers

    /// Called for each box while it is open. Afterwards the box is closed.
    std::function<void(QMessageBox *)> onBox;
    /// Text of the button that closes a box, or "Esc" or "Enter" for that key. A box that does not
    /// have this button is accepted.
    QString boxAnswer;
    bool leavesDialogsOpen = false;
    /// "icon: title: text" of each box that opened, then "(no parent)" if the window is not its
    /// parent, and "(no icon)" if it does not have the window's icon.
    QStringList boxes;
    QStringList fileDialogs; ///< "title: filters: folder" of each file dialog that opened

    MainWindow window;
    const QList<QTimer *> timers; ///< of the sequences: read, write, read, write

    /// Enters the path, or cancels the dialog if the path is empty. Returns whether it was
    /// accepted.
    static bool answer(QFileDialog *dialog, const QString &path);

private:
    [[noreturn]] static void fail(const QString &reason);
    void pollDialogs();
    void handleFileDialog(QFileDialog *dialog);
    void handleBox(QMessageBox *box);
    QString describe(const QMessageBox *box) const;

    QString nextPath;
    QString failure;
    /// QSettings folder for the file dialogs' history, in place of the user's own.
    const QTemporaryDir settingsFolder;
};
