#include "ini_objects.h"

#include <QByteArray>
#include <QRegularExpression>

bool namesObject(const QByteArray &ini)
{
    const QString blanks = "[ \t]*+";
    // What the reader drops: byte order marks, the ends of joined lines, a backslash with a
    // character that makes no escape with it.
    const QString dropped =
        R"((?:\xef\xbb\xbf|\\(?:\r\n|\n\r|x(?![[:xdigit:]])|[^abfnrtv"?'\\x0-7]))*+)";
    // Of the number in an escape the reader keeps sixteen bits.
    const QString at =
        R"((?:@|\\x(?:[[:xdigit:]]*00|0)?40(?![[:xdigit:]])|\\(?:[0-7]*00|0)?100(?![0-7])))";
    // A value, and each item of a list, may begin with quoted nothings, blanks behind each; a text
    // that begins with "@" is written with two of them.
    static const QRegularExpression object("[=,]" + blanks + dropped + "(?:\"" + dropped + '"'
                                           + blanks + dropped + ")*+(?:\"" + dropped + ")?+" + at
                                           + "(?!@)");
    // By its size, for a NUL does not end it.
    return object.match(QLatin1String(ini.constData(), ini.size())).hasMatch();
}
