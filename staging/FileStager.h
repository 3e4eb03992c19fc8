#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

namespace ondrel {

class RunContext;
class Error;
struct PlannedDestination;
struct PlannedGroup;
struct PlannedSource;

// Stages one selected file to every destination path of its file group: the attribute filters,
// the overwrite rule, missing directories, the copy, the Archive reset and the delete list of a
// move, with every failure reported and answered (Abort, Retry, Ignore) as it happens.
class FileStager {
public:
    explicit FileStager(RunContext& run);

    // relativeAt: where the source's path below its source path begins in SourceFile (its name
    // alone for a selected file).
    void StageFile(const PlannedGroup& FileGroup, const QByteArray& SourceFile,
                   qsizetype relativeAt);

    // With workers: StageFile is to be called for SourceFile soon, after the files expected
    // before it. Its copies are transferred ahead, and committed when StageFile reaches them.
    void expect(const PlannedGroup& FileGroup, const QByteArray& SourceFile, qsizetype relativeAt);

    // Whether the last StageFile copied the file (to one destination at least): the files after
    // it are worth transferring ahead.
    bool copied() const { return m_copied; }
    // Whether this run's looks at destinations wait (on a disk or a server): the files ahead are
    // then worth looking at on the workers even where nothing will be copied.
    bool looksAreSlow() const;

private:
    // What StageFile is doing when a step fails; its name is in the text of error 5.
    enum class Task { CheckVarSP, CheckDPDrive, GetSPAttr, GetDPAttr, FileCopy, ProcessDP };
    static QString taskName(Task task);

    // Where StageFile goes on after a step.
    enum class Next { Retry, NextDestination, Return };

    // What one call of StageFile knows while it works.
    struct Call {
        std::optional<Task> task;
        const PlannedSource* from = nullptr;
        QByteArray source;
        // The source as the user reads it, made when a message or the log needs it.
        const QString& shownSource();
        QString shownSourceText;
        QByteArray sourceDir;     // the directory of a selected file, for "CheckVarSP"
        qsizetype relativeAt = 0; // where the path below the source path begins in source
        const PlannedDestination* to = nullptr; // the destination path being worked on
        QByteArray destFile;                    // the file there
        // The destination's drive: the mount point of its file system.
        const QByteArray& drive() const;
        std::optional<FileStatus> sourceStatus;
        bool attributesRead = false;
        // The file or directory a question about error is about, for a host that shows it.
        const QByteArray& concerned(const Error& error) const;
    };

    // relative: the source's path below its source path (its name alone for a selected file).
    Next toDestination(Call& call, const PlannedDestination& to, QByteArrayView relative);
    // These three give nothing when the step succeeded and the destination's staging goes on.
    std::optional<Next> readSourceStatus(Call& call, StatusDetail detail);
    std::optional<Next> checkDrive(Call& call);
    // dest: the file found at the destination, which the overwrite rule said to replace, or
    // nothing when there was none.
    std::optional<Next> copy(Call& call, const std::optional<FileStatus>& dest);
    // The copy from its transfer made ahead: nothing when there is none to commit, and the copy
    // is then made as without workers.
    std::optional<Result<CopiedFile>> commitAhead(const Call& call, const CopyControl& control);
    // The overwrite rule on a file found at the destination: nothing when it is to be replaced,
    // otherwise how to go on (the "Prompt" question asked and logged).
    std::optional<Next> decideOverwrite(Call& call, const FileStatus& dest);
    // What a move needs to know of a copy to delete its source safely.
    void rememberCopy(const Call& call, const CopiedFile& copied);
    // The permission bits of a destination directory the run makes (dir, below or at the
    // destination path of call), or -1 for the default.
    int permissionsFor(const Call& call, const QByteArray& dir);
    std::optional<Next> resetArchive(Call& call);
    void noteArchiveReset(const Call& call);
    // The one error handler of StageFile: reports the failure as its number calls for and says
    // how to go on.
    Next handleError(const Error& error, Call& call);

    RunContext& m_run;
    bool m_copied = false;
    std::chrono::steady_clock::duration m_lookTime{};
    qint64 m_looks = 0;
};

} // namespace ondrel
