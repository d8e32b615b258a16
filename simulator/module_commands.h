#pragma once

#include <QByteArray>
#include <QMap>
#include <QVector>

/// A protocol-converter module simulated in software, on a pseudo-terminal.
/// The name of a parameter is its query keyword ("ip", "PORT TCP").
namespace simulator {

enum class ModuleKind { TcpRtu, RtuTcp, Universal };

/// The bytes of one command, parsed.
struct Command {
    enum class Type { Query, Write, Restart, FactoryReset, Invalid };

    Type type;
    QByteArray query; ///< the parameter queried or written
    QByteArray value; ///< the value written, in the form in which replies report it
};

/// Invalid: unknown to the kind, or a write command whose value the module does not accept.
Command parseCommand(ModuleKind kind, const QByteArray &bytes);

/// The parameters of a kind, in the order in which they are read.
QVector<QByteArray> queriesOf(ModuleKind kind);

/// The factory settings by parameter, as replies report them.
QMap<QByteArray, QByteArray> factoryValues(ModuleKind kind);

/// Replies, with their line end.
QByteArray queryReply(const QByteArray &query, const QByteArray &value);
QByteArray acknowledgement(ModuleKind kind);
QByteArray refusal(ModuleKind kind);

} // namespace simulator
