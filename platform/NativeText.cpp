#include "platform/NativeText.h"

#include <QStringDecoder>

#include <algorithm>

namespace ondrel {

namespace {

constexpr char16_t kEscapeBase = 0xDC00; // + the byte, 0x80..0xFF

bool isContinuation(uchar c) {
    return (c & 0xC0) == 0x80;
}

// The length of the valid UTF-8 sequence at p (left bytes available), or 0 when there is none.
// Overlong forms, surrogates and values past U+10FFFF are not valid.
int validSequenceLength(const uchar* p, qsizetype left) {
    const uchar c = p[0];
    if (c < 0x80)
        return 1;
    int length = 0;
    uchar low = 0x80, high = 0xBF; // the allowed range of the second byte
    if (c >= 0xC2 && c <= 0xDF) {
        length = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
        length = 3;
        if (c == 0xE0)
            low = 0xA0;
        else if (c == 0xED)
            high = 0x9F;
    } else if (c >= 0xF0 && c <= 0xF4) {
        length = 4;
        if (c == 0xF0)
            low = 0x90;
        else if (c == 0xF4)
            high = 0x8F;
    } else {
        return 0;
    }
    if (left < length || p[1] < low || p[1] > high)
        return 0;
    for (int i = 2; i < length; ++i) {
        if (!isContinuation(p[i]))
            return 0;
    }
    return length;
}

// Valid UTF-8 as text. QString::fromUtf8 drops a byte-order mark at the start of what it
// decodes; in a name, or after an odd byte within one, those bytes are part of the name.
QString fromUtf8(QByteArrayView valid) {
    if (!valid.startsWith("\xEF\xBB\xBF"))
        return QString::fromUtf8(valid);
    QStringDecoder decode(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                    QStringDecoder::Flag::ConvertInitialBom);
    return decode(valid);
}

bool isEscape(QChar c) {
    return c.unicode() >= kEscapeBase + 0x80 && c.unicode() <= kEscapeBase + 0xFF;
}

// Characters that display() writes out. Surrogates are looked at more closely: a pair is a
// character and stays.
bool isShownEscaped(char16_t c) {
    return c < 0x20 || (c >= 0x7F && c <= 0x9F) || c == 0x061C || c == 0x200E || c == 0x200F ||
           (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069) ||
           (c >= 0xD800 && c <= 0xDFFF);
}

void appendHex(QString& out, char prefix, unsigned value, int digits) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    out += QLatin1Char('\\');
    out += QLatin1Char(prefix);
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
        out += QLatin1Char(kHex[(value >> shift) & 0xF]);
}

} // namespace

QString NativeText::toText(QByteArrayView native) {
    if (native.isValidUtf8())
        return fromUtf8(native);
    QString text;
    text.reserve(native.size());
    const auto* p = reinterpret_cast<const uchar*>(native.data());
    const qsizetype size = native.size();
    qsizetype runStart = 0;
    qsizetype i = 0;
    while (i < size) {
        const int length = validSequenceLength(p + i, size - i);
        if (length > 0) {
            i += length;
            continue;
        }
        text += fromUtf8(native.sliced(runStart, i - runStart));
        text += QChar(char16_t(kEscapeBase + p[i]));
        runStart = ++i;
    }
    text += fromUtf8(native.sliced(runStart));
    return text;
}

QByteArray NativeText::toNative(QStringView text) {
    const auto first = std::find_if(text.begin(), text.end(), isEscape);
    if (first == text.end())
        return text.toUtf8();
    QByteArray native;
    native.reserve(text.size());
    qsizetype runStart = 0;
    for (qsizetype i = first - text.begin(); i < text.size(); ++i) {
        // A low surrogate that completes a pair is part of a character, never an escape.
        if (!isEscape(text[i]) || (i > 0 && text[i - 1].isHighSurrogate()))
            continue;
        native += text.sliced(runStart, i - runStart).toUtf8();
        native += char(text[i].unicode() - kEscapeBase);
        runStart = i + 1;
    }
    native += text.sliced(runStart).toUtf8();
    return native;
}

QString NativeText::display(QStringView text, Tabs tabs) {
    const auto escaped = [tabs](QChar c) {
        return isShownEscaped(c.unicode()) && !(c == u'\t' && tabs == Tabs::Kept);
    };
    const auto first = std::find_if(text.begin(), text.end(), escaped);
    if (first == text.end())
        return text.toString();
    QString out;
    out.reserve(text.size() + 16);
    out += text.first(first - text.begin());
    for (qsizetype i = first - text.begin(); i < text.size(); ++i) {
        const QChar c = text[i];
        if (!escaped(c)) {
            out += c;
        } else if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            out += c;
            out += text[++i];
        } else if (c == u'\n') {
            out += QLatin1StringView("\\n");
        } else if (c == u'\r') {
            out += QLatin1StringView("\\r");
        } else if (c == u'\t') {
            out += QLatin1StringView("\\t");
        } else if (c.unicode() < 0x20 || c.unicode() == 0x7F) {
            appendHex(out, 'x', c.unicode(), 2);
        } else if (isEscape(c)) {
            appendHex(out, 'x', c.unicode() - kEscapeBase, 2);
        } else {
            appendHex(out, 'u', c.unicode(), 4);
        }
    }
    return out;
}

QString NativeText::display(QByteArrayView native) {
    // Most names are printable ASCII and are shown as they are.
    const bool printable = std::all_of(native.begin(), native.end(),
                                       [](char c) { return uchar(c) >= 0x20 && uchar(c) < 0x7F; });
    if (printable)
        return QString::fromLatin1(native);
    return display(toText(native));
}

} // namespace ondrel
