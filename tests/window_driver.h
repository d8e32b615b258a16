#pragma once

#include "mainwindow.h"
#include "simulated_module.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <functional>

using Kind = simulator::ModuleKind; ///< as the module has it; the program has its own

/// Watches for message boxes and does with each one, as soon as it is open, what a user would.
class Boxes : public QObject {
    Q_OBJECT

public:
    Boxes();

    QStringList seen; ///< "title: text" of every box, in the order in which they opened
    std::function<void(QMessageBox *)> handle; ///< what to do with the next ones; closes by default

    static QList<QMessageBox *> open();

private:
    void look();
    QList<QPointer<QMessageBox>> known;
};

/// The real window with a simulated module on its line, used by object names as a person uses it.
class WindowDriver {
public:
    explicit WindowDriver(Kind kind = Kind::Universal);
    ~WindowDriver();

    template <class Widget> Widget *find(const QString &name)
    {
        auto *widget = window.findChild<Widget *>(name);
        if (!widget)
            qFatal("no object %s", qPrintable(name));
        return widget;
    }

    void choosePort(const QString &port);
    void connectPort(); ///< and the window has the module's kind
    void click(const QString &button) { find<QAbstractButton>(button)->click(); }
    bool isEnabled(const QString &name) { return find<QWidget>(name)->isEnabled(); }
    QString mark(const QString &name) { return find<QWidget>(name)->styleSheet(); }
    QString text(const QString &name); ///< of a button, line edit, label; "#index" of a combo box
    void enter(const QString &name, const QString &text); ///< into a line edit, or an item's index
    QString status();

    enum Sequence { Scan, Change, ScanAll, ChangeMode };
    QTimer *timer(Sequence sequence);
    QTimer *activeTimer(); ///< of the running sequence, or nullptr

    /// From a slowed-down sequence on, time passes by tick() only.
    void slowDown();
    void tick();             ///< of the active timer
    void ticksEvery(int ms); ///< real ticks, sped up

    bool tickCommand();  ///< a tick that sends; true when the module has the command
    bool tickAndReply(); ///< and when the window has handled the reply as well
    bool deliver(const QByteArray &bytes); ///< unsolicited; true when the window has handled it
    bool readWholeModule();                ///< click on scan and ticks to the end

    QStringList debugLines; ///< of the window
    int deliveriesHandled() const;

    simulator::SimulatedModule module;
    MainWindow window;
    Boxes boxes;
    QByteArrayList commands; ///< that the module received
};

/// Style sheets of the marks.
constexpr char green[] = "background-color:  #90ee90;";
constexpr char red[] = "background-color: #FF2400";
constexpr char lilac[] = "background-color:  #f5edff;";

/// One parameter as the line and the form have it.
struct ParameterCase {
    const char *query;
    const char *widget;
    const char *onLine; ///< a value in a reply
    const char *inForm; ///< how the form shows it, "#index" for a combo box
};

/// The parameters of a kind in the order in which they are read.
QVector<ParameterCase> parametersOf(Kind kind);

Q_DECLARE_METATYPE(Kind)

/// Adds a row for each module kind with a column "kind".
void addKindRows();
Kind fetchKind();
