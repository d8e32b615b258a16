#pragma once

class QByteArray;

/// Whether QSettings would build an object, of any type and size that the file states, from a value
/// or a list item in this text of an INI file: "@Variant(…)" or "@DateTime(…)", in any spelling.
///
/// How QSettings decodes a text that is not UTF-8 depends on the version of Qt. There, bytes that
/// are not ASCII are skipped, so that no object can hide behind them; "é@Variant(" is a false
/// positive.
bool containsSerializedObject(const QByteArray &ini);

bool isUtf8(const QByteArray &text);
