#pragma once

#include "form.h"
#include "playback.h"

#include <QDir>
#include <QTemporaryDir>

/// A user who reads a module, writes new values into it and reads it again, saves the new values to
/// a file and loads them from there, and in the end prints how all this went.
class Demonstration : public QObject {
    Q_OBJECT

public:
    /// The form has the module's kind and port chosen.
    Demonstration(Form *windowForm, const QDir &screenshotFolder);

    void start() { playback.start(); }

signals:
    void ended(bool allRight);

private:
    /// What the user has seen and done of one parameter.
    struct Row {
        const Parameter *parameter;
        QString before = {};
        QString mark = {};
        QString written = {};
        QString after = {};
        QString markAfter = {};
    };
    using Column = QString Row::*;
    struct Finding {
        QString text;
        bool isFine;
    };

    void planRead();
    void planWrite();
    void planSecondRead();
    void planFiles();
    void addConnect();

    void click(QPushButton *Names::*button) const;
    bool reads(QPushButton *Names::*button, const char *label) const;
    void readForm(Column values);
    void readMarks(Column values);
    void enterNewValues();
    void emptyForm();
    void chooseFile() const;
    void takeScreenshot(const QString &fileName);

    void conclude(bool playedToEnd);
    bool printValues() const;
    bool printFiles() const;
    static Finding compare(const Row &row);

    Form *form;
    Playback playback;
    QDir screenshots;
    QTemporaryDir folder;
    QString settingsFile;
    ModuleKind kind;
    QVector<Row> rows; ///< of the kind's parameters
};
