#include "platform/FileMask.h"

#include <QList>

#include <string_view>

namespace ondrel {

namespace {

bool isAscii(QByteArrayView name) {
    for (const char c : name)
        if (uchar(c) >= 0x80)
            return false;
    return true;
}

char32_t asciiLower(char32_t c) {
    return c >= U'A' && c <= U'Z' ? c + (U'a' - U'A') : c;
}

// "*" any run, "?" one character, anything else itself; name[i] is folded by fold.
template <typename Name, typename Fold>
bool wildcardMatch(std::u32string_view pattern, const Name& name, size_t length, Fold fold) {
    constexpr size_t none = size_t(-1);
    size_t p = 0, s = 0, star = none, starS = 0;
    while (s < length) {
        if (p < pattern.size() && pattern[p] == U'*') {
            star = p++;
            starS = s;
        } else if (p < pattern.size() && (pattern[p] == U'?' || pattern[p] == fold(name[s]))) {
            ++p;
            ++s;
        } else if (star != none) {
            p = star + 1;
            s = ++starS;
        } else {
            return false;
        }
    }
    while (p < pattern.size() && pattern[p] == U'*')
        ++p;
    return p == pattern.size();
}

// The mask as written, or (for "abc.*") without its ".*".
template <typename Name, typename Fold>
bool maskMatch(std::u32string_view pattern, bool withoutDotTail, const Name& name, size_t length,
               Fold fold) {
    return wildcardMatch(pattern, name, length, fold) ||
           (withoutDotTail &&
            wildcardMatch(pattern.substr(0, pattern.size() - 2), name, length, fold));
}

} // namespace

Result<FileMask> FileMask::compile(const QString& masks) {
    for (const QChar c : masks)
        if (QStringView(u"\\/:<>|\"").contains(c))
            return Error(ErrNo::InvalidCall, QStringLiteral("FileMask"));
    FileMask compiled;
    for (const QStringView mask : QStringView(masks).split(u';')) {
        const QStringView trimmed = mask.trimmed();
        if (trimmed.isEmpty())
            continue;
        const QList<uint> folded = trimmed.toString().toCaseFolded().toUcs4();
        Pattern pattern;
        pattern.folded.assign(folded.begin(), folded.end());
        // As on Windows, "abc.*" also takes "abc", and so "*.*" takes every name.
        pattern.withoutDotTail = pattern.folded.ends_with(U".*");
        compiled.m_patterns.push_back(std::move(pattern));
    }
    return compiled;
}

bool FileMask::matches(QByteArrayView name) const {
    if (isAscii(name)) {
        const auto fold = [](char c) { return asciiLower(char32_t(uchar(c))); };
        for (const Pattern& p : m_patterns)
            if (maskMatch(p.folded, p.withoutDotTail, name, size_t(name.size()), fold))
                return true;
        return false;
    }
    // Bytes that are not UTF-8 decode as U+FFFD.
    const QList<uint> folded = QString::fromUtf8(name).toCaseFolded().toUcs4();
    const auto fold = [](uint c) { return char32_t(c); };
    for (const Pattern& p : m_patterns)
        if (maskMatch(p.folded, p.withoutDotTail, folded, size_t(folded.size()), fold))
            return true;
    return false;
}

} // namespace ondrel
