#pragma once

#include "platform/Result.h"

#include <QString>

namespace ondrel {

// Conversions of text read from INI files into the values of settings and spec entries.
// A text that is no number fails with error 13 (type mismatch), a number out of range with 6.
class Convert {
public:
    // "True"/"False" in any case, or a number: zero is false, anything else true.
    static Result<bool> toBoolean(const QString& text);
    // A number, with a fraction rounded to the nearest integer (half to even).
    static Result<qint32> toLong(const QString& text);
    static Result<qint16> toInteger(const QString& text);
    // "True" or "False", as Booleans are written to INI files and the log.
    static QString booleanText(bool value);

private:
    static Result<double> toNumber(const QString& text);
};

} // namespace ondrel
