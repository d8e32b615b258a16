#pragma once

#include "module_parameters.h"

#include <QByteArray>
#include <QString>

/// Converts the bytes on the serial line to values and back. A command is sent in one piece without
/// a terminator; a query is answered with its keyword, one separator character and the value, a
/// write command with a bare acknowledgement word.
namespace protocol {

constexpr char restart[] = "RESET"; ///< understood by every kind
constexpr char loadFactorySettings[] = "LOAD SETTING:DEFAULT";

/// The value of a parameter that is switched off, on the line and in settings files.
constexpr char off[] = "off";

/// The restart command that ends a write: "RESET", or "reset" for the universal module.
const char *restartAfterWrite(Dialect dialect);

/// The text of one delivery: UTF-8 up to the first NUL, without any CR and LF.
QString decodeReply(const QByteArray &delivery);

/// The value in a reply to the parameter's query: taken by position and width; the keyword and the
/// separator are not checked. Empty if the reply ends before the value.
QString valueField(const Parameter &parameter, const QString &replyText);

/// The combo box item that a reply value selects, or -1 for an unknown code.
int itemOf(const Codes &codes, const QString &value);

/// The value that writes a combo box item; empty for an item without a code, like the empty one.
QByteArray codeOf(const Codes &codes, int item);

enum class WriteReply { Acknowledged, Refused, Ignored };

/// The meaning of a reply to the parameter's write command. The universal module refuses some
/// parameters with "?" only; any other word is then Ignored.
WriteReply classifyWriteReply(const Parameter &parameter, Dialect dialect,
                              const QString &replyText);

} // namespace protocol
