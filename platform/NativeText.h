#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace ondrel {

// Native paths held as text without losing a byte. Valid UTF-8 reads as itself; each byte that
// is not part of valid UTF-8 becomes the lone surrogate U+DC80..U+DCFF (no valid text holds
// one), so a name the file system holds survives a trip through a QString, such as the
// program-wide list of individually selected files, and comes back byte for byte.
class NativeText {
public:
    static QString toText(QByteArrayView native);
    static QByteArray toNative(QStringView text);

    // Whether display() writes a tab out as \t or keeps it (a log line or a summary line that
    // lines up its values with tabs).
    enum class Tabs { Escaped, Kept };

    // Text as the log, the windows and the terminal show it. Every character that some reader
    // takes for a line break or a terminal control, or that reorders the text around it, is
    // written out: LF, CR and TAB as \n, \r, \t; the other C0 controls and DEL as \xNN; the C1
    // controls (NEL, CSI, ...), the line and paragraph separators U+2028, U+2029 and the
    // bidirectional controls as \uNNNN; and each odd byte that toText holds as U+DC80..U+DCFF
    // as \xNN, the byte it stands for. So a name can neither start a line of its own nor pass
    // for another name. What comes out holds none of these and comes out unchanged again:
    // shown text can be shown once more without harm.
    static QString display(QStringView text, Tabs tabs = Tabs::Escaped);
    // A native name or path, shown as display() shows its text (toText).
    static QString display(QByteArrayView native);
};

} // namespace ondrel
