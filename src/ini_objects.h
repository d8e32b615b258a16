#pragma once

class QByteArray;

/// Whether a value in the text of an INI file names an object, "@Variant(…)" or "@DateTime(…)",
/// which the reader of QSettings would build, of whatever type and size the file says.
///
/// Sees the text as that reader does, in any key of any section. In doubt, the answer is yes; but a
/// text that QSettings has written is never taken for an object, whatever it says.
bool namesObject(const QByteArray &ini);
