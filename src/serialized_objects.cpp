#include "serialized_objects.h"

#include <QString>

namespace {

constexpr int noCharacter = -1;

/// The value of a hexadecimal digit, or 16 for any other character.
int digitOf(char ch)
{
    const char lower = char(ch | 0x20);
    return ch >= '0' && ch <= '9' ? ch - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 16;
}

/// Decodes the escape that follows a backslash, and moves behind it. Returns the character, of
/// which QSettings keeps 16 bits, or noCharacter if QSettings drops the escape. Returns a backslash
/// for every escape like "\n", because it does not matter which of these characters it is.
int decodeEscape(const char *&at, const char *end)
{
    if (at == end)
        return noCharacter;
    const char kind = *at;
    const bool isHex = kind == 'x';
    const char *const first = at + isHex;
    const int base = isHex ? 16 : 8;
    ushort number = 0;
    for (at = first; at != end && digitOf(*at) < base; ++at)
        number = ushort(number * base + digitOf(*at));
    if (at != first)
        return number;
    if (isHex)
        return noCharacter;
    ++at;
    if (at != end && ((kind == '\r' && *at == '\n') || (kind == '\n' && *at == '\r')))
        ++at; // a line that continues
    return QByteArray::fromRawData("abfnrtv\"?'\\", 11).contains(kind) ? '\\' : noCharacter;
}

/// Parses a text of an INI file as QSettings does: lines, keys and values, list items, quotes,
/// escapes and comments.
class Parser {
public:
    explicit Parser(const QByteArray &ini)
        : at(ini.constData())
        , end(at + ini.size())
        , skipsNonAscii(!isUtf8(ini))
    {
    }

    bool isAtEnd() const { return at == end; }
    bool isInObject() const { return inValue && (item == "@Variant(" || item == "@DateTime("); }

    /// Parses the next character or escape.
    void advance()
    {
        const char ch = *at++;
        if (ch == '\\')
            addEscape();
        else if (ch == '"')
            toggleQuotes();
        else if (!inQuotes && (ch == ';' || ch == '\r' || ch == '\n'))
            endValue(ch);
        else if (!inQuotes && ch == (inValue ? ',' : '='))
            beginItem();
        else if (!skipsSpaces || (ch != ' ' && ch != '\t'))
            add(ch);
    }

private:
    void addEscape()
    {
        const int escaped = decodeEscape(at, end);
        if (escaped != noCharacter)
            item += escaped < 0x80 ? char(escaped) : '?';
        skipsSpaces = false;
    }

    void toggleQuotes()
    {
        inQuotes = !inQuotes;
        skipsSpaces = !inQuotes;
    }

    void endValue(char ch)
    {
        while (ch == ';' && at != end && *at != '\r' && *at != '\n')
            ++at; // skips the comment
        inValue = false;
    }

    void beginItem()
    {
        item.resize(0);
        inValue = true;
        skipsSpaces = true;
    }

    void add(char ch)
    {
        const char byteOrderMark[] = "\xef\xbb\xbf"; // QSettings drops it anywhere.
        if (!skipsNonAscii || uchar(ch) < 0x80)
            item += ch;
        if (item.endsWith(byteOrderMark))
            item.chop(3);
        skipsSpaces = false;
    }

    const char *at;
    const char *const end;
    const bool skipsNonAscii;
    QByteArray item; ///< the decoded part of a value or list item
    bool inValue = false;
    bool inQuotes = false;
    bool skipsSpaces = false;
};

} // namespace

bool isUtf8(const QByteArray &text)
{
    const QByteArray longer =
        'x' + text; // fromUtf8() would drop a byte order mark at the beginning.
    return QString::fromUtf8(longer.constData(), longer.size()).toUtf8() == longer;
}

bool containsSerializedObject(const QByteArray &ini)
{
    Parser parser(ini);
    while (!parser.isAtEnd() && !parser.isInObject())
        parser.advance();
    return parser.isInObject();
}
