#pragma once

#include "module_parameters.h"
#include "ui_mainwindow.h"

#include <QHash>

/// Stands before the name of a widget or action of the form.
using Names = Ui_MainWindow;

/// The form of a window that keeps its form to itself, used as a person uses it.
class Form : public QObject {
public:
    explicit Form(QMainWindow *window);

    /// Finds a widget or action by the name that it has in the form.
    template <class Object> Object *find(Object *Names::*member) const
    {
        return window->findChild<Object *>((names.*member)->objectName());
    }

    QString label(const Parameter &parameter) const;
    /// As the form shows it; "off" for a parameter that is switched off.
    QString value(const Parameter &parameter) const;
    /// Takes the same texts; an empty one stands for the blank item of a combo box.
    void enter(const Parameter &parameter, const QString &value) const;

    /// The last green or red mark that the field has had since forgetMarks(), or mark::none.
    QString lastMark(const Parameter &parameter) const;
    int markedFields() const { return marks.size(); }
    void forgetMarks() { marks.clear(); }

    QPixmap picture() const { return window->grab(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *field(const Parameter &parameter) const;
    QCheckBox *offSwitch(const Parameter &parameter) const;

    QMainWindow *window;
    QMainWindow scratch; ///< never shown; its form knows the object names
    Names names;
    QHash<const QObject *, QString> marks;
};
