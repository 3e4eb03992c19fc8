#include "staging/basLibrary.h"

#include "platform/MsgBox.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"

#include <functional>

namespace ondrel::basLibrary {

namespace {

bool isWordChar(QChar c) {
    return c == u'-' || (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') ||
           (c >= u'a' && c <= u'z');
}

} // namespace

QString Replace(const QString& Text, const QString& Find, const QString& ReplaceWith,
                qint16 PartialWords, qint16 FirstOnly) {
    QString s = Text;
    if (Find.isEmpty())
        return s;
    qsizetype start = 0;
    for (;;) {
        const qsizetype at = s.indexOf(Find, start, Qt::CaseSensitive);
        if (at < 0)
            return s;
        bool replace = PartialWords >= 1;
        if (!replace) {
            const bool before = at > 0 && isWordChar(s[at - 1]);
            const qsizetype after = at + Find.size();
            const bool behind = after < s.size() && isWordChar(s[after]);
            replace = !before && !behind;
        }
        if (replace) {
            s = s.left(at) + ReplaceWith + s.mid(at + Find.size());
            start = at + ReplaceWith.size();
        } else {
            // Advances from the previous start, not from the match: the same match is found
            // again until the start passes it.
            start += Find.size();
        }
        if (FirstOnly >= 1)
            return s;
    }
}

bool MakeDirTree(const QByteArray& Path, StagingFileOps& ops, StagingHost& host, bool showErrMsgs,
                 const std::function<int(const QByteArray& level)>& permissionsOf) {
    QByteArray path = Path;
    if (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    // Every level from the left is made, an existing one passed over. Asking the deepest first
    // and going up only while a parent is missing ends the same way (the first level that cannot
    // be made is the first missing one either way) with far fewer calls when most levels exist.
    QByteArray failed = path;
    const std::function<Result<void>(qsizetype)> make = [&](qsizetype end) -> Result<void> {
        const QByteArray level = path.left(end);
        const int permissions = permissionsOf ? permissionsOf(level) : -1;
        Result<void> made = ops.makeDirectory(level, permissions);
        if (!made.ok() && made.error().number() == ErrNo::PathNotFound) {
            const qsizetype slash = path.lastIndexOf('/', end - 1);
            if (slash > 0) { // the root is never made
                if (Result<void> parent = make(slash); !parent.ok())
                    return parent;
                made = ops.makeDirectory(level, permissions);
            }
        }
        if (made.ok() || made.error().number() == ErrNo::PathFileAccess)
            return {};
        failed = level;
        return made;
    };
    const Result<void> made = make(path.size());
    if (made.ok())
        return true;
    if (showErrMsgs)
        host.askAbout(failed, ErrorReportText(made.error()), MsgButtons::OK, MsgIcon::None,
                      QStringLiteral("MakeDirTree Error"));
    return false;
}

QString YesNo(bool value) {
    return value ? QStringLiteral("Yes") : QStringLiteral("No");
}

} // namespace ondrel::basLibrary
