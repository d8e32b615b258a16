#include "form.h"

#include "module_protocol.h"
#include "texts.h"

#include <QEvent>

namespace {

QString textOf(const QLineEdit *field)
{
    return field->text();
}

QString textOf(const QComboBox *field)
{
    return field->currentText();
}

void setText(QLineEdit *field, const QString &text)
{
    field->setText(text);
}

void setText(QComboBox *field, const QString &text)
{
    field->setCurrentText(text);
}

} // namespace

Form::Form(QMainWindow *windowWithForm)
    : window(windowWithForm)
{
    names.setupUi(&scratch);
    for (const Parameter &parameter : parameters())
        field(parameter)->installEventFilter(this);
}

QWidget *Form::field(const Parameter &parameter) const
{
    return std::visit([this](auto member) -> QWidget * { return find(member); }, parameter.field);
}

QCheckBox *Form::offSwitch(const Parameter &parameter) const
{
    return parameter.offSwitch ? find(parameter.offSwitch) : nullptr;
}

QString Form::label(const Parameter &parameter) const
{
    return find(parameter.label)->text().simplified();
}

QString Form::value(const Parameter &parameter) const
{
    const QCheckBox *off = offSwitch(parameter);
    if (off && off->isChecked())
        return protocol::off;
    return std::visit([this](auto member) { return textOf(find(member)); }, parameter.field);
}

void Form::enter(const Parameter &parameter, const QString &value) const
{
    const bool off = value == QLatin1String(protocol::off);
    QCheckBox *box = offSwitch(parameter);
    if (box && box->isChecked() != off)
        box->click();
    if (!box || !off)
        std::visit([&](auto member) { setText(find(member), value); }, parameter.field);
}

QString Form::lastMark(const Parameter &parameter) const
{
    return marks.value(field(parameter));
}

bool Form::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::StyleChange) {
        const QString styleSheet = qobject_cast<QWidget *>(watched)->styleSheet();
        if (styleSheet == mark::green || styleSheet == mark::red)
            marks.insert(watched, styleSheet);
    }
    return QObject::eventFilter(watched, event);
}
