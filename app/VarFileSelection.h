#pragma once

#include <QString>
#include <QStringList>

namespace ondrel {

// The individual file selection, kept for the life of the program between openings of its
// dialog: the chosen files that the "<various>" source path stages, the mask last used and the
// five attribute filters (1 ticked, 0 clear). An empty selection is one empty entry. Each file is
// its full path as NativeText gives it, so a name that is not valid UTF-8 is kept byte for byte.
struct VarFileSelection {
    QStringList VariousFiles{QString()};
    QString FileSelMask = QStringLiteral("*.*");
    qint16 ShowArchive = 1;
    qint16 ShowHidden = 1;
    qint16 ShowNormal = 1;
    qint16 ShowRO = 1;
    qint16 ShowSystem = 1;

    // Back to an empty selection, as New and Open leave it.
    void clearFiles() { VariousFiles = QStringList{QString()}; }
};

} // namespace ondrel
