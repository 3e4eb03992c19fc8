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

} // namespace ondrel
