#pragma once

#include "platform/Result.h"

#include <QByteArrayView>
#include <QString>

#include <string>
#include <vector>

namespace ondrel {

// A ";"-separated list of file masks, compiled once so that every name of a listing is matched
// without allocating. Matching ignores case: "*" is any run of characters, "?" one character,
// anything else itself, and a mask ending in ".*" also takes the name without it, so "abc.*"
// takes "abc" and "*.*" takes every name, also one without a dot.
class FileMask {
public:
    // Matches no name, as an empty list does.
    FileMask() = default;

    // Blanks around a mask are dropped and empty masks ignored. A list holding any of
    // \ / : < > | " is error 5.
    static Result<FileMask> compile(const QString& masks);

    // Whether a file name (native bytes) matches one of the masks. Bytes that are not valid
    // UTF-8 read as the replacement character, so such a name still matches "*".
    bool matches(QByteArrayView name) const;

private:
    struct Pattern {
        std::u32string folded; // the mask, case-folded
        bool withoutDotTail = false;
    };
    std::vector<Pattern> m_patterns;
};

} // namespace ondrel
