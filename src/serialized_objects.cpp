#include "serialized_objects.h"

#include <QByteArray>

namespace {

/// The value of a hexadecimal digit, or 16 for any other character.
int digitOf(char ch)
{
    const char lower = char(ch | 0x20);
    return ch >= '0' && ch <= '9' ? ch - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 16;
}

bool isLineEnd(int ch)
{
    return ch == '\r' || ch == '\n';
}

/// Advances past the escape that follows a backslash. Returns its number, of which QSettings keeps
/// 16 bits, or 0 for an escape without one.
ushort decodeEscape(const char *&at, const char *end)
{
    const bool isHex = *at == 'x';
    const int base = isHex ? 16 : 8;
    const char *const first = at + isHex;
    ushort number = 0;
    for (at = first; at != end && digitOf(*at) < base; ++at)
        number = ushort(number * base + digitOf(*at));
    if (at == first && !isHex) {
        ++at; // an escape like "\n", or a line that continues
        while (at != end && isLineEnd(at[-1]) && isLineEnd(*at))
            ++at;
    }
    return number;
}

} // namespace

// QSettings drops some of the quotes, spaces, escapes and byte order marks. Here all of them are
// dropped, and whatever else is not visible ASCII, so that no object can hide behind them.
bool containsSerializedObject(const QByteArray &ini)
{
    QByteArray text; // with "=" in place of each ","
    const char *at = ini.constData();
    const char *const end = at + ini.size();
    while (at != end) {
        int ch = uchar(*at++);
        if (ch == '\\' && at != end)
            ch = decodeEscape(at, end);
        if ((ch > ' ' && ch < 0x7f && ch != '"') || isLineEnd(ch))
            text += ch == ',' ? '=' : char(ch);
    }
    return text.contains("=@Variant(") || text.contains("=@DateTime(");
}
