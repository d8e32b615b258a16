#include "ui_driver.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QMetaEnum>
#include <QSettings>
#include <QStatusBar>

#include <stdexcept>
#include <utility>

UiDriver::UiDriver()
    : timers(window.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly))
{
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsFolder.path());
    window.setFixedSize(MainWindow::startSize);
    pollDialogs();
}

void UiDriver::choosePort(const QString &port)
{
    auto *ports = find<QComboBox>("serialPortInfoListBox");
    if (ports->findText(port) < 0)
        ports->addItem(port);
    ports->setCurrentText(port);
}

void UiDriver::click(const QString &button)
{
    find<QAbstractButton>(button)->click();
}

void UiDriver::trigger(const QString &action, const QString &path)
{
    nextPath = path;
    find<QAction>(action)->trigger();
    // An event loop would have deleted these objects by now.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    if (!failure.isEmpty())
        fail(std::exchange(failure, QString()));
}

void UiDriver::enter(const QString &field, const QString &value)
{
    auto *widget = find<QWidget>(field);
    if (auto *edit = qobject_cast<QLineEdit *>(widget))
        edit->setText(value);
    else if (auto *combo = qobject_cast<QComboBox *>(widget))
        combo->setCurrentText(value);
    else if (text(field) != value)
        click(field);
    if (text(field) != value)
        fail(QString("%1 does not take \"%2\"").arg(field, value));
}

QString UiDriver::text(const QString &name)
{
    auto *object = find<QObject>(name);
    if (auto *combo = qobject_cast<QComboBox *>(object))
        return combo->currentIndex() < 0 ? "(no item)" : combo->currentText();
    if (auto *check = qobject_cast<QCheckBox *>(object))
        return check->isChecked() ? "checked" : "unchecked";
    if (auto *status = qobject_cast<QStatusBar *>(object))
        return status->currentMessage();
    return object->property("text").toString();
}

QString UiDriver::labelOf(QWidget *field)
{
    const auto labels = QAccessible::queryAccessibleInterface(field)->relations(QAccessible::Label);
    return labels.isEmpty() ? "no label" : labels.first().first->text(QAccessible::Name);
}

QString UiDriver::mark(const QString &field)
{
    return find<QWidget>(field)->styleSheet();
}

bool UiDriver::isEnabled(const QString &name)
{
    return find<QWidget>(name)->isEnabled();
}

bool UiDriver::isVisible(const QString &name)
{
    return find<QWidget>(name)->isVisible();
}

void UiDriver::waitFor(const QString &what, const std::function<bool()> &done, int limitMs)
{
    if (!waitUntil(done, limitMs))
        fail(failure.isEmpty() ? QString("no %1 within %2 ms").arg(what).arg(limitMs) : failure);
}

bool UiDriver::waitUntil(const std::function<bool()> &done, int limitMs)
{
    QElapsedTimer clock;
    clock.start();
    while (failure.isEmpty() && !done()) {
        if (clock.hasExpired(limitMs))
            return false;
        // pollDialogs() provides events.
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return failure.isEmpty();
}

void UiDriver::setTick(int ms)
{
    for (QTimer *timer : timers) {
        if (timer->isActive())
            timer->setInterval(ms);
    }
}

bool UiDriver::answer(QFileDialog *dialog, const QString &path)
{
    dialog->findChild<QLineEdit *>("fileNameEdit")->setText(path);
    if (!path.isEmpty())
        QMetaObject::invokeMethod(dialog, "accept"); // QFileDialog hides this slot
    const bool taken = path.isEmpty() || !dialog->isVisible();
    if (dialog->isVisible())
        dialog->reject();
    return taken;
}

void UiDriver::fail(const QString &reason)
{
    throw std::runtime_error(reason.toStdString());
}

void UiDriver::pollDialogs()
{
    // First, because onBox may wait while further dialogs open.
    QTimer::singleShot(2, this, &UiDriver::pollDialogs);
    QWidget *dialog = QApplication::activeModalWidget();
    if (!dialog || dialog->property("seen").toBool())
        return;
    dialog->setProperty("seen", true);
    if (auto *fileDialog = qobject_cast<QFileDialog *>(dialog))
        handleFileDialog(fileDialog);
    else
        handleBox(qobject_cast<QMessageBox *>(dialog));
}

void UiDriver::handleFileDialog(QFileDialog *dialog)
{
    fileDialogs.append(dialog->windowTitle() + ": " + dialog->nameFilters().join(' ') + ": "
                       + dialog->directory().path());
    if (!leavesDialogsOpen && !answer(dialog, nextPath))
        abortWait("the file dialog does not take " + nextPath);
}

void UiDriver::handleBox(QMessageBox *box)
{
    QAbstractButton *button = box->button(QMessageBox::Yes); // of a file dialog: overwrite?
    if (!button) {
        boxes.append(describe(box));
        if (onBox)
            onBox(box);
        for (QAbstractButton *candidate : box->buttons()) {
            if (candidate->text() == boxAnswer)
                button = candidate;
        }
    }
    if (leavesDialogsOpen)
        return;
    if (button) {
        button->click();
    } else if (boxAnswer == "Esc" || boxAnswer == "Enter") {
        const int key = boxAnswer == "Esc" ? Qt::Key_Escape : Qt::Key_Enter;
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(box, &press);
        if (box->isVisible())
            boxes.append("does not take " + boxAnswer);
    }
    if (box->isVisible())
        box->accept();
}

QString UiDriver::describe(const QMessageBox *box) const
{
    const char *icon = QMetaEnum::fromType<QMessageBox::Icon>().valueToKey(box->icon());
    QString text = QString("%1: %2: %3").arg(icon, box->windowTitle(), box->text());
    if (box->parent() != &window)
        text += " (no parent)";
    if (box->windowIcon().availableSizes() != window.windowIcon().availableSizes())
        text += " (no icon)";
    return text;
}
