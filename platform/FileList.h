#pragma once

#include "platform/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace ondrel {

// A list of individually selected files kept as a text file: one full path per line, read back
// with the rules of the system's delimited-text input, so that a list written by hand, or by
// another program with several paths on a line, reads the same way.
class FileList {
public:
    // The full paths the file holds, in file order. A missing file is error 53 (76 when its
    // directory is missing too); other read failures carry their own numbers.
    static Result<QStringList> read(const QString& fileName);

    // The same rules on text already read (UTF-8; bytes that are not valid UTF-8 are kept as
    // NativeText keeps them):
    // - an item ends at a line end (CR LF, LF or a lone CR) or at a comma outside double quotes;
    // - blanks (spaces, tabs) before an item are skipped; an unquoted item loses its trailing
    //   blanks too;
    // - an item that begins with a double quote runs to the next double quote (or the line end)
    //   and the quotes are removed; what follows the closing quote up to the delimiter is
    //   ignored;
    // - an item that is not an absolute path is skipped;
    // - an item equal to the entry kept just before it is dropped, so no path follows itself.
    static QStringList parse(const QByteArray& text);

    // Whether an item names a file by its full path ("/..." on POSIX, "X:\..." or "\\server\..."
    // on Windows).
    static bool isAbsolute(const QString& path);
};

} // namespace ondrel
