#include "demonstration.h"

#include "texts.h"

#include <QFileDialog>
#include <QMap>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>

namespace {

constexpr int writeLimitSeconds = 60;

/// What is written, by query. Each differs from what a module has at first, and the time-out needs
/// more characters than a reply has for it.
const QMap<QByteArray, QString> newValues{
    {"MODE TCP", "Клиент TCP"},       {"ip", "10.20.30.40"}, {"MASK", "255.255.0.0"},
    {"GATEWAY", "10.20.30.1"},        {"PORT TCP", "10502"}, {"parity", "контроль четности"},
    {"SPEED RS485", "57600"},         {"STOP BIT", "2"},     {"timeout response", "60000"},
    {"IP SERVER TCP", "10.20.30.50"}, {"TIMEOUT TCP", "60"}, {"rtu virtual id", "247"},
    {"tcp slave id", "off"},
};

QString wordFor(const QString &styleSheet)
{
    if (styleSheet == mark::green)
        return "green";
    return styleSheet == mark::red ? "red" : "none";
}

void printRow(const QStringList &cells)
{
    const QVector<int> widths{29, 19, 6, 18, 18};
    QString line;
    for (int i = 0; i < cells.size(); ++i)
        line += cells.at(i).leftJustified(widths.value(i));
    print(line);
}

} // namespace

Demonstration::Demonstration(Form *windowForm, const QDir &screenshotFolder)
    : form(windowForm)
    , screenshots(screenshotFolder)
    , settingsFile(folder.filePath("demonstration.TRset"))
    , kind(moduleKindAt(form->find(&Names::conbox0)->currentIndex()).value())
{
    // File dialogs note what was chosen in them; the user's own notes are no business of this.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder.path());

    for (const Parameter *parameter : readList(kind))
        rows.append(Row{parameter});
    connect(&playback, &Playback::ended, this, &Demonstration::conclude);
    planRead();
    planWrite();
    planSecondRead();
    planFiles();
}

void Demonstration::addConnect()
{
    playback.add({"connecting to " + form->find(&Names::serialPortInfoListBox)->currentText(),
                  [this] { click(&Names::connect); },
                  [this] { return reads(&Names::connect, text::disconnectPort); }});
}

void Demonstration::planRead()
{
    addConnect();
    playback.add({QString("reading %1 parameters, one a second").arg(rows.size()),
                  [this] {
                      form->forgetMarks();
                      click(&Names::scan_parameters);
                  },
                  [this] { return 2 * form->markedFields() >= rows.size(); }});
    playback.add({"half of them read", [this] { takeScreenshot("read-half.png"); },
                  [this] { return reads(&Names::scan_parameters, text::scan); }});
}

void Demonstration::planWrite()
{
    const int count = writeList(kind).size();
    const QString kindName = form->find(&Names::conbox0)->currentText().trimmed();
    playback.add({QString("writing %1 parameters, one every two seconds").arg(count),
                  [this] {
                      takeScreenshot("read-end.png");
                      readForm(&Row::before);
                      readMarks(&Row::mark);
                      enterNewValues();
                      form->forgetMarks();
                      click(&Names::applyButton);
                  },
                  [this, count] { return 2 * form->markedFields() >= count; }, writeLimitSeconds});
    playback.add({"half of them written",
                  [this] { takeScreenshot("write-half.png"); },
                  [] { return openBox() != nullptr; },
                  writeLimitSeconds,
                  {text::writeResult, QString(text::writeSucceeded).arg(kindName)}});
    const QString port = form->find(&Names::serialPortInfoListBox)->currentText();
    playback.add({"success; the module restarts",
                  [] { openBox()->button(QMessageBox::Ok)->click(); },
                  [this, port] {
                      return reads(&Names::connect, text::connectPort)
                          && form->find(&Names::statusbar)->currentMessage() == text::disconnected
                          && QFileInfo::exists(port);
                  }});
}

void Demonstration::planSecondRead()
{
    addConnect();
    playback.add({"reading everything again",
                  [this] {
                      form->forgetMarks();
                      click(&Names::scan_parameters);
                  },
                  [this] { return reads(&Names::scan_parameters, text::scan); }});
    playback.add({"disconnecting",
                  [this] {
                      readForm(&Row::after);
                      readMarks(&Row::markAfter);
                      click(&Names::connect);
                  },
                  [this] { return reads(&Names::connect, text::connectPort); }});
}

void Demonstration::planFiles()
{
    const auto dialogIsOpen = [] { return openFileDialog() != nullptr; };
    playback.add({"saving the form, with the new values, to a file",
                  [this] {
                      enterNewValues();
                      form->find(&Names::action_save)->trigger();
                  },
                  dialogIsOpen});
    playback.add(
        {{},
         [this] { chooseFile(); },
         [this, dialogIsOpen] { return !dialogIsOpen() && QFileInfo::exists(settingsFile); }});
    playback.add({"emptying the form and loading the file",
                  [this] {
                      emptyForm();
                      form->find(&Names::action_open_2)->trigger();
                  },
                  dialogIsOpen});
    playback.add({{}, [this] { chooseFile(); }, [dialogIsOpen] { return !dialogIsOpen(); }});
}

void Demonstration::click(QPushButton *Names::*button) const
{
    form->find(button)->click();
}

bool Demonstration::reads(QPushButton *Names::*button, const char *label) const
{
    return form->find(button)->text() == label;
}

void Demonstration::readForm(Column values)
{
    for (Row &row : rows)
        row.*values = form->value(*row.parameter);
}

void Demonstration::readMarks(Column values)
{
    for (Row &row : rows)
        row.*values = form->lastMark(*row.parameter);
}

void Demonstration::enterNewValues()
{
    for (Row &row : rows) {
        if (!row.parameter->writeCommand)
            continue;
        row.written = newValues.value(row.parameter->query, row.before);
        form->enter(*row.parameter, row.written);
    }
}

void Demonstration::emptyForm()
{
    for (const Row &row : rows) {
        if (row.parameter->writeCommand)
            form->enter(*row.parameter, {});
    }
    QComboBox *kinds = form->find(&Names::conbox0);
    kinds->setCurrentIndex((kinds->currentIndex() + 1) % kinds->count());
}

void Demonstration::chooseFile() const
{
    QFileDialog *dialog = openFileDialog();
    dialog->findChild<QLineEdit *>("fileNameEdit")->setText(settingsFile);
    QMetaObject::invokeMethod(dialog, "accept");
}

void Demonstration::takeScreenshot(const QString &fileName)
{
    const QString path = screenshots.filePath(fileName);
    if (!form->picture().save(path))
        playback.fail("cannot write " + path);
}

void Demonstration::conclude(bool playedToEnd)
{
    if (!playedToEnd) {
        emit ended(false);
        return;
    }
    const bool valuesRight = printValues();
    const bool filesRight = printFiles();
    emit ended(valuesRight && filesRight);
}

bool Demonstration::printValues() const
{
    bool allRight = true;
    print({});
    printRow({"Parameter", "before", "mark", "written", "after", "finding"});
    for (const Row &row : rows) {
        const Finding finding = compare(row);
        printRow({form->label(*row.parameter), row.before, wordFor(row.mark), row.written,
                  row.after, finding.text});
        allRight = allRight && finding.isFine;
    }
    return allRight;
}

Demonstration::Finding Demonstration::compare(const Row &row)
{
    if (row.mark != mark::green)
        return {"not read", false};
    if (row.markAfter != mark::green)
        return {"not read again", false};
    const int width = row.parameter->width;
    const QString &expected = row.parameter->writeCommand ? row.written : row.before;
    if (row.after == expected)
        return {"ok", true};
    if (row.after == expected.left(width))
        return {QString("lost by the protocol: replies carry %1 characters").arg(width), true};
    return {"difference", false};
}

bool Demonstration::printFiles() const
{
    bool allRight = form->find(&Names::conbox0)->currentIndex() == static_cast<int>(kind);
    print({});
    if (!allRight)
        print("settings file: another kind of module than saved");
    for (const Row &row : rows) {
        const QString loaded = form->value(*row.parameter);
        if (!row.parameter->writeCommand || loaded == row.written)
            continue;
        print(QString("settings file: %1 is \"%2\", saved was \"%3\"")
                  .arg(form->label(*row.parameter), loaded, row.written));
        allRight = false;
    }
    if (allRight)
        print("settings file: loaded as saved");
    return allRight;
}
