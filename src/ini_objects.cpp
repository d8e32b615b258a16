#include "ini_objects.h"

#include <QByteArray>
#include <QRegularExpression>

#include <cstring>
#include <utility>

namespace {

bool isOneOf(const char *characters, char character)
{
    return character != '\0' && std::strchr(characters, character) != nullptr;
}

/// Reads INI text as QSettings does: without quotes, comments and escapes, which count as what they
/// stand for.
class Reader {
public:
    explicit Reader(QByteArray ini)
        : text(std::move(ini))
    {
    }

    QString read()
    {
        while (position < text.size())
            takeNext();
        return seen;
    }

private:
    void takeNext()
    {
        const char next = text.at(position++);
        if (next == '\\') {
            takeEscape();
        } else if (next == '"') {
            quoted = !quoted;
            if (!quoted)
                skip(" \t");
        } else if (next == ';' && !quoted) {
            while (position < text.size() && !isOneOf("\r\n", text.at(position)))
                ++position;
        } else if (next == '\xef' && text.mid(position, 2) == "\xbb\xbf") {
            position += 2; // a byte order mark, which the decoder drops from the start of a piece
        } else {
            take(next, quoted);
        }
    }

    /// A separator or blank that is quoted or escaped does not separate anything.
    void take(char character, bool isLiteral)
    {
        seen += QLatin1Char(isLiteral && isOneOf("=, \t", character) ? '?' : character);
    }

    void takeEscape()
    {
        const char kind = position < text.size() ? text.at(position++) : '\0';
        if (kind == 'x') {
            takeCode(skip("0123456789abcdefABCDEF"), 16);
        } else if (isOneOf("01234567", kind)) {
            --position;
            takeCode(skip("01234567"), 8);
        } else if (isOneOf("abfnrtv\"?'\\", kind)) {
            seen += QLatin1Char('?');
        } else if (isOneOf("\r\n", kind) && position < text.size()
                   && isOneOf(kind == '\r' ? "\n" : "\r", text.at(position))) {
            ++position;
        }
        // Anything else goes with its backslash.
    }

    /// The reader keeps sixteen bits of a code of any length.
    void takeCode(const QByteArray &digits, int base)
    {
        if (digits.isEmpty())
            return;
        const int unit = digits.right(base == 16 ? 4 : 6).toInt(nullptr, base) & 0xffff;
        take(unit < 0x80 ? static_cast<char>(unit) : '?', true);
    }

    QByteArray skip(const char *characters)
    {
        const int start = position;
        while (position < text.size() && isOneOf(characters, text.at(position)))
            ++position;
        return text.mid(start, position - start);
    }

    const QByteArray text;
    QString seen;
    int position = 0;
    bool quoted = false;
};

} // namespace

bool namesObject(const QByteArray &ini)
{
    // A value, and each item of a list, may begin with blanks. A text that begins with "@" has it
    // twice.
    static const QRegularExpression object("[=,][ \t]*@(Variant|DateTime)\\(");
    return Reader(ini).read().contains(object);
}
