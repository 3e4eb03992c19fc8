#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

namespace ondrel {

class StagingFileOps;
class StagingHost;

// General routines of the staging engine and the windows.
namespace basLibrary {

// Replaces Find by ReplaceWith in Text. With PartialWords < 1 only a whole word is replaced: a
// match touching a letter, digit or "-" on either side is left alone. With FirstOnly < 1 every
// occurrence is replaced (True, -1, counts as less than 1), otherwise only the first.
QString Replace(const QString& Text, const QString& Find, const QString& ReplaceWith,
                qint16 PartialWords, qint16 FirstOnly);

// Makes the directory Path and every missing parent, level by level; a level that exists already
// is passed over. False on any other failure, which is first shown as the standard error box
// "MakeDirTree Error" when showErrMsgs is on. permissionsOf gives the bits of each level made
// (-1, or no function: the default).
bool MakeDirTree(const QByteArray& Path, StagingFileOps& ops, StagingHost& host, bool showErrMsgs,
                 const std::function<int(const QByteArray& level)>& permissionsOf = {});

// "Yes" or "No", as the options list shows a Boolean.
QString YesNo(bool value);

} // namespace basLibrary

} // namespace ondrel
