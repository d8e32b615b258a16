#pragma once

class QByteArray;

/// Whether the reader of QSettings might build an object, of whatever type and size the file says,
/// from a value in this text of an INI file: "@Variant(…)" or "@DateTime(…)", in any spelling.
///
/// Every value that begins with a single "@" counts, and inside texts and comments every "@" behind
/// a comma or an equals sign does too: rather a text such as "a,@b" than an object that passes.
bool namesObject(const QByteArray &ini);
