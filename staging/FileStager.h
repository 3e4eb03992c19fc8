#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <unordered_map>

namespace ondrel {

class StagingRun;
class clsFileGroup;
class Error;

// Stages one selected file to every destination path of its file group: the attribute filters,
// the overwrite rule, missing directories, the copy, the Archive reset and the delete list of a
// move, with every failure reported and answered (Abort, Retry, Ignore) as it happens.
class FileStager {
public:
    explicit FileStager(StagingRun& run);

    void StageFile(const clsFileGroup& FileGroup, const QByteArray& SourceFile);

private:
    // Where StageFile goes on after a step.
    enum class Next { Retry, NextDestination, Return };

    // What one call of StageFile knows while it works.
    struct Call {
        QString Task;
        QByteArray source;
        // The source as the user reads it, made when a message or the log needs it.
        const QString& shownSource();
        QString shownSourceText;
        QByteArray sourceDir; // the directory of a selected file, for "CheckVarSP"
        QString drive;
        std::optional<FileStatus> sourceStatus;
        bool attributesRead = false;
    };

    // relative: the source's path below its source path (its name alone for a selected file).
    Next toDestination(Call& call, const QString& destPath, QByteArrayView relative);
    // These three give nothing when the step succeeded and the destination's staging goes on.
    std::optional<Next> readSourceStatus(Call& call, StatusDetail detail);
    std::optional<Next> checkDrive(Call& call);
    std::optional<Next> copy(Call& call, const QByteArray& destFile, DestinationHint hint);
    std::optional<Next> resetArchive(Call& call);
    // The one error handler of StageFile: reports the failure as its number calls for and says
    // how to go on.
    Next handleError(const Error& error, Call& call);

    // What a destination path gives every file staged to it, made once per run.
    struct Destination {
        QByteArray base; // native form, without a trailing separator
        QString drive;
    };
    const Destination& destination(const QString& destPath);

    StagingRun& m_run;
    // By the address of the destination path's name: the spec does not change during a run.
    std::unordered_map<const QString*, Destination> m_destinations;
    QByteArray m_curSourcePath; // native form of the source path being walked
    QString m_curSourcePathText;
};

} // namespace ondrel
