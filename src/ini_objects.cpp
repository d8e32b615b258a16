#include "ini_objects.h"

#include <QString>

namespace {

constexpr int nothing = -1;

/// 16 for what is no digit.
int digitOf(char ch)
{
    const char lower = char(ch | 0x20);
    return ch >= '0' && ch <= '9' ? ch - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 16;
}

/// Takes an escape without its backslash. The character that the reader makes of it, or nothing.
int takeEscape(const char *&at, const char *end)
{
    if (at == end)
        return nothing;
    const char kind = *at;
    const bool isHex = kind == 'x';
    const char *const first = at + isHex;
    const int base = isHex ? 16 : 8;
    ushort number = 0; // The reader too keeps sixteen bits only.
    for (at = first; at != end && digitOf(*at) < base; ++at)
        number = ushort(number * base + digitOf(*at));
    if (at != first)
        return number;
    if (isHex)
        return nothing;
    ++at;
    if (at != end && ((kind == '\r' && *at == '\n') || (kind == '\n' && *at == '\r')))
        ++at; // a joined line
    return QByteArray::fromRawData("abfnrtv\"?'\\", 11).contains(kind) ? '\\' : nothing;
}

} // namespace

bool isUtf8(const QByteArray &text)
{
    const QByteArray longer = 'x' + text; // At the beginning a byte order mark would be lost.
    return QString::fromUtf8(longer.constData(), longer.size()).toUtf8() == longer;
}

// Follows the reader of QSettings, as it cuts a file into lines, lines into keys and values, and
// values into items.
bool namesObject(const QByteArray &ini)
{
    const QByteArray byteOrderMark = "\xef\xbb\xbf"; // dropped by the reader
    // Parts of other letters it may drop as well; then none of such bytes counts.
    const bool hasLetters = isUtf8(ini);
    QByteArray item; // what the reader has of it so far
    bool inValue = false;
    bool inQuotes = false;
    bool skipsBlanks = false;
    const char *const end = ini.constData() + ini.size();
    for (const char *at = ini.constData(); at != end;) {
        const char ch = *at++;
        if (ch == '\\') {
            const int escaped = takeEscape(at, end);
            if (escaped != nothing)
                item += escaped < 0x80 ? char(escaped) : '?';
            skipsBlanks = false;
        } else if (ch == '"') {
            inQuotes = !inQuotes;
            skipsBlanks = !inQuotes;
        } else if (!inQuotes && (ch == ';' || ch == '\r' || ch == '\n')) {
            while (ch == ';' && at != end && *at != '\r' && *at != '\n')
                ++at;
            inValue = false;
        } else if (!inQuotes && ch == (inValue ? ',' : '=')) {
            item.resize(0);
            inValue = true;
            skipsBlanks = true;
        } else if (!skipsBlanks || (ch != ' ' && ch != '\t')) {
            if (hasLetters || uchar(ch) < 0x80)
                item += ch;
            if (item.endsWith(byteOrderMark))
                item.chop(byteOrderMark.size());
            skipsBlanks = false;
        }
        if (inValue && (item == "@Variant(" || item == "@DateTime("))
            return true;
    }
    return false;
}
