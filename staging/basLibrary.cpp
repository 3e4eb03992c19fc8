#include "staging/basLibrary.h"

#include "platform/MsgBox.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"

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

bool MakeDirTree(const QByteArray& Path, StagingFileOps& ops, StagingHost& host, bool showErrMsgs) {
    QByteArray path = Path;
    if (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    auto make = [&](const QByteArray& level) {
        const Result<void> made = ops.makeDirectory(level);
        if (made.ok() || made.error().number() == ErrNo::PathFileAccess)
            return true;
        if (showErrMsgs)
            host.ask(ErrorReportText(made.error()), MsgButtons::OK, MsgIcon::None,
                     QStringLiteral("MakeDirTree Error"));
        return false;
    };
    // Each level left of a separator, the root excepted, then the whole path.
    for (qsizetype at = path.indexOf('/', 1); at > 0; at = path.indexOf('/', at + 1)) {
        if (!make(path.left(at)))
            return false;
    }
    return make(path);
}

QString YesNo(bool value) {
    return value ? QStringLiteral("Yes") : QStringLiteral("No");
}

} // namespace ondrel::basLibrary
