#pragma once

#include <qnamespace.h>

namespace ondrel {

// Whether two spellings of a path that differ only in case name the same file here. Windows
// ignores case, so C:\Data and c:\DATA are one directory. POSIX systems keep it: /data and /DATA
// are two. macOS counts as keeping case too: its volumes can be formatted case-sensitive, and
// there a case-blind comparison would refuse two directories that really are different, while on
// a case-blind volume treating two spellings as two paths costs at most the same files copied
// once more, visibly listed twice. The selected-files list draws the same line.
inline constexpr Qt::CaseSensitivity kFileNameCase =
#ifdef Q_OS_WIN
    Qt::CaseInsensitive;
#else
    Qt::CaseSensitive;
#endif

} // namespace ondrel
