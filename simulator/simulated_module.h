#pragma once

#include "module_dialect.h"
#include "pty_line.h"

#include <QDeadlineTimer>
#include <QTimer>

namespace simulator {

/// Ways to misbehave; may be changed at any time and hold from the next command on.
struct Faults {
    bool silent = false;  ///< obeys, but replies to nothing
    int delayMs = 30;     ///< from a command to its reply
    QByteArray refuse;    ///< the parameter whose write is refused
    bool split = false;   ///< each reply comes in two deliveries
    bool empty = false;   ///< a delivery of only CR LF precedes each reply
    bool garbage = false; ///< a delivery of line noise precedes each reply
    int hangUpAfter = -1; ///< commands until the line is hung up for good; below 1: never
    int floodMs = 0;      ///< from a command on, line noise without pause for this long
    QMap<QByteArray, QByteArray> answers; ///< by parameter, reported in place of its value
};

/// What a module is like from the start.
struct Options {
    ModuleKind kind = ModuleKind::Universal;
    /// Where the port is to be found; if empty, in a private temporary folder.
    QString linkPath = {};
    Faults faults = {};
    int restartMs = 3000;
};

/// A module on a serial line of its own: answers queries, obeys write commands, restarts when told
/// to, and misbehaves as asked. Each delivery on the line is taken for one command.
class SimulatedModule : public QObject {
    Q_OBJECT

public:
    explicit SimulatedModule(const Options &options);
    ~SimulatedModule() override;

    /// Goes on the line. False, with errorString() set, if that fails.
    bool start();
    QString errorString() const { return line.errorString(); }
    /// The path of the port, the same before and after a restart.
    QString portPath() const { return line.path(); }
    int farEnd() const { return line.farEnd(); } ///< see PtyLine

    ModuleKind kind() const { return moduleKind; }
    QVector<QByteArray> queries() const { return queriesOf(moduleKind); }

    /// Any value, as replies report it. Without effect on a parameter that the kind does not have.
    void setValue(const QByteArray &query, const QByteArray &value);

    /// An unsolicited delivery, at once.
    void send(const QByteArray &bytes);

    /// Goes off the line, dropping the replies that are due, until comeBack().
    void hangUp();
    /// Without effect while on the line.
    void comeBack();

    Faults faults;
    int restartMs; ///< time off the line during a restart

signals:
    void commandReceived(const QByteArray &command);
    void deliverySent(const QByteArray &delivery); ///< one of those of a reply
    void wentOff();
    void cameBack();

private:
    void takeCommand(const QByteArray &bytes);
    void obey(const Command &command);
    void reply(const QByteArray &bytes);
    void sendNext();
    void restart();
    void flood();

    const ModuleKind moduleKind;
    QMap<QByteArray, QByteArray> values;
    PtyLine line;
    QTimer restartTimer;
    QTimer floodTimer; ///< fires as often as it can
    QDeadlineTimer floodEnd;
    bool restarting = false;
    /// Context of everything that is due; replacing it calls all of that off.
    std::unique_ptr<QObject> due;
    /// Deliveries of replies. Each is sent once the one before it has been read, so that they
    /// arrive apart.
    QByteArrayList unsent;
};

} // namespace simulator
