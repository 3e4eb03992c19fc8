#include "platform/Convert.h"

#include <QRegularExpression>

#include <cmath>
#include <limits>

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("Convert");

template <typename Int> Result<Int> roundToInt(Result<double> number) {
    if (!number.ok())
        return number.error();
    // nearbyint rounds half to even in the default rounding mode, like the system's conversions.
    const double rounded = std::nearbyint(number.value());
    if (!(rounded >= double(std::numeric_limits<Int>::min()) &&
          rounded <= double(std::numeric_limits<Int>::max())))
        return Error(ErrNo::Overflow, kSource);
    return static_cast<Int>(rounded);
}

} // namespace

Result<double> Convert::toNumber(const QString& text) {
    static const QRegularExpression numeric(
        QStringLiteral("^[ \\t]*[+-]?([0-9]+\\.?[0-9]*|\\.[0-9]+)([eE][+-]?[0-9]+)?[ \\t]*$"));
    if (!numeric.match(text).hasMatch())
        return Error(ErrNo::TypeMismatch, kSource);
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return Error(ErrNo::Overflow, kSource);
    return value;
}

Result<bool> Convert::toBoolean(const QString& text) {
    const QString t = text.trimmed();
    if (t.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0)
        return true;
    if (t.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0)
        return false;
    Result<double> number = toNumber(t);
    if (!number.ok())
        return Error(ErrNo::TypeMismatch, kSource);
    return number.value() != 0.0;
}

Result<qint32> Convert::toLong(const QString& text) {
    return roundToInt<qint32>(toNumber(text));
}

Result<qint16> Convert::toInteger(const QString& text) {
    return roundToInt<qint16>(toNumber(text));
}

QString Convert::booleanText(bool value) {
    return value ? QStringLiteral("True") : QStringLiteral("False");
}

} // namespace ondrel
