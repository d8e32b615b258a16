#pragma once

class QByteArray;

/// Whether the reader of QSettings would build an object, of whatever type and size the file says,
/// from a value or an item of a list in this text of an INI file: from one that reads "@Variant(…)"
/// or "@DateTime(…)", in any spelling.
///
/// What comes of a file that is not UTF-8 depends on the version of Qt. There the bytes that are
/// not ASCII are skipped: rather a text such as "é@Variant(" than an object that passes.
bool namesObject(const QByteArray &ini);

bool isUtf8(const QByteArray &text);
