#include "module_protocol.h"

#include <algorithm>
#include <cstring>

namespace protocol {

const char *restartAfterWrite(Dialect dialect)
{
    return dialect == Dialect::Fixed ? restart : "reset";
}

QString decodeReply(const QByteArray &delivery)
{
    QString text = QString::fromUtf8(delivery.constData());
    text.remove(QLatin1Char('\r'));
    text.remove(QLatin1Char('\n'));
    return text;
}

QString valueField(const Parameter &parameter, const QString &replyText)
{
    const int separator = 1;
    const int start = static_cast<int>(std::strlen(parameter.query)) + separator;
    return replyText.mid(start, parameter.width);
}

int itemOf(const Codes &codes, const QString &value)
{
    const auto code = std::find_if(codes.begin(), codes.end(), [&value](const Code &candidate) {
        return value == QLatin1String(candidate.reply);
    });
    return code == codes.end() ? -1 : code->item;
}

QByteArray codeOf(const Codes &codes, int item)
{
    const auto code = std::find_if(codes.begin(), codes.end(), [item](const Code &candidate) {
        return candidate.item == item;
    });
    return code == codes.end() ? QByteArray() : QByteArray(code->write);
}

WriteReply classifyWriteReply(const Parameter &parameter, Dialect dialect, const QString &replyText)
{
    const bool universal = dialect == Dialect::Universal;
    if (replyText == QLatin1String(universal ? "ok" : "OK"))
        return WriteReply::Acknowledged;
    if (universal && parameter.has(RefusedByQuestionMark) && replyText != QLatin1String("?"))
        return WriteReply::Ignored;
    return WriteReply::Refused;
}

} // namespace protocol
