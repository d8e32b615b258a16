#pragma once

#include "module_commands.h"
#include "pty_line.h"

#include <QDeadlineTimer>
#include <QTimer>

namespace simulator {

/// Ways to misbehave. Changes take effect from the next command on.
struct Faults {
    bool silent = false;  ///< executes commands, but does not reply
    int delayMs = 30;     ///< from a command to its reply
    QByteArray refuse;    ///< the parameter whose write is refused
    bool split = false;   ///< each reply comes in two deliveries
    bool empty = false;   ///< a delivery of only CR LF precedes each reply
    bool garbage = false; ///< a delivery of line noise precedes each reply
    int hangUpAfter = -1; ///< commands until the line is hung up permanently; below 1: never
    int floodMs = 0;      ///< line noise without pause for this long after a command
    QMap<QByteArray, QByteArray> reportedValues; ///< by parameter, in place of its value
};

/// The initial state of a module.
struct Options {
    ModuleKind kind = ModuleKind::Universal;
    /// The path of the port; if empty, in a temporary folder.
    QString linkPath = {};
    Faults faults = {};
    int restartMs = 3000;
};

/// A module on a serial line of its own: answers queries, obeys write commands, restarts on
/// command, and misbehaves as configured. Each delivery on the line is parsed as one command.
class SimulatedModule : public QObject {
    Q_OBJECT

public:
    explicit SimulatedModule(const Options &options);
    ~SimulatedModule() override;

    /// Connects to the line. Returns false and sets errorString() on failure.
    bool start();
    QString errorString() const { return line.errorString(); }
    /// The path of the port, the same before and after a restart.
    QString portPath() const { return line.path(); }
    int slaveFd() const { return line.slaveFd(); } ///< see PtyLine

    ModuleKind kind() const { return moduleKind; }
    QVector<QByteArray> queries() const { return queriesOf(moduleKind); }

    /// Sets any value, as replies report it. Ignores a parameter that the kind does not have.
    void setValue(const QByteArray &query, const QByteArray &value);

    /// Sends an unsolicited delivery, at once.
    void send(const QByteArray &bytes);

    /// Disconnects until reconnect(), and drops pending replies.
    void hangUp();
    /// No effect while connected.
    void reconnect();

    Faults faults;
    int restartMs; ///< how long the module stays disconnected during a restart

signals:
    void commandReceived(const QByteArray &command);
    void deliverySent(const QByteArray &delivery); ///< one part of a reply
    void disconnected();
    void reconnected();

private:
    void handleCommand(const QByteArray &bytes);
    void execute(const Command &command);
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
    /// Context of the timers of pending replies and restarts; replacing it cancels them.
    std::unique_ptr<QObject> timerContext;
    /// Further parts of replies. Each is sent when the client has read the one before it, so that
    /// they are separate deliveries however busy the machine is.
    QByteArrayList unsent;
};

} // namespace simulator
