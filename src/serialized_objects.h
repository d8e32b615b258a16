#pragma once

class QByteArray;

/// Whether a value or list item in this text of an INI file can make QSettings build an object:
/// "@Variant(…)" or "@DateTime(…)", in any spelling. The file chooses its type and size.
///
/// No object is missed. False positives are a text that begins with such a word after spaces, and a
/// text or comment in which "=" or "," precedes one. "@@Variant(…)" is none: QSettings writes a
/// text that begins with "@" like this.
bool containsSerializedObject(const QByteArray &ini);
