#pragma once

// Shared by the staging tests: a scripted host, and helpers that build real trees.

#include "app/ScreenMetrics.h"
#include "app/clsOndrelApp.h"
#include "spec/clsSpecFile.h"
#include "staging/StagingFileOps.h"
#include "staging/StagingHost.h"
#include "staging/StagingLog.h"
#include "staging/StagingRun.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <deque>
#include <functional>
#include <memory>

namespace ondrel::test {

// A host that records what the run shows and answers questions from a queue (the first button
// when the queue is empty).
class ScriptedHost : public StagingHost {
public:
    struct Question {
        QString prompt;
        MsgButtons buttons;
        MsgIcon icon;
        QString title;
    };
    std::deque<MsgAnswer> answers;
    QList<Question> questions;
    // Runs before a queued answer is given (to repair a fault before a Retry, say).
    std::function<void(const Question&)> onAsk;
    std::function<void()> onYield;
    QString summaryTitle, summaryText;
    int yields = 0;

    MsgAnswer ask(const QString& prompt, MsgButtons buttons, MsgIcon icon,
                  const QString& title) override {
        questions.append({prompt, buttons, icon, title});
        if (onAsk)
            onAsk(questions.last());
        if (answers.empty())
            return firstButton(buttons);
        const MsgAnswer a = answers.front();
        answers.pop_front();
        return a;
    }
    void showSourcePath(const QString&) override {}
    void showFileGroup(const QString&) override {}
    void showDirectory(const QString&) override {}
    void showSourceFile(const QByteArray&) override {}
    void showDestFile(const QByteArray&) override {}
    void setProgressRange(int) override {}
    void advanceProgress() override {}
    void yield() override {
        ++yields;
        if (onYield)
            onYield();
    }
    void showSummary(const QString& title, const QString& text) override {
        summaryTitle = title;
        summaryText = text;
    }
    QStringList titles() const {
        QStringList out;
        for (const Question& q : questions)
            out << q.title;
        return out;
    }
};

// The real disk, with hooks where a user or another program could act while the run works.
class HookedDiskOps : public DiskFileOps {
public:
    // Before each copy, once the run has decided on it.
    std::function<void(const QByteArray& source, const QByteArray& destination)> onCopy;
    // Before a copy made ahead takes its name (the copy watched through onCopy is never made
    // ahead).
    std::function<void(const CopyJob& job)> onCommit;
    // Before the copies of a move are synced, that is before its deletions.
    std::function<void()> onSync;
    // On a worker's thread, as a transfer made ahead begins (true) and ends (false).
    std::function<void(const QByteArray& source, bool begins)> onTransfer;
    // The devices whose sync is reported as failed, besides those that really failed.
    std::vector<dev_t> failingDevices;

    // A copy the test watches is made when the run reaches it.
    bool transfersAhead() const override { return !onCopy; }
    Result<CopiedFile> copyFile(const QByteArray& source, const QByteArray& destination,
                                DestinationHint hint, const CopyControl& control) override {
        if (onCopy)
            onCopy(source, destination);
        return DiskFileOps::copyFile(source, destination, hint, control);
    }
    Result<std::unique_ptr<CopyJob>> transferFile(const QByteArray& source,
                                                  const QByteArray& destination,
                                                  DestinationHint hint,
                                                  const CopyControl& control) override {
        if (onTransfer)
            onTransfer(source, true);
        Result<std::unique_ptr<CopyJob>> made =
            DiskFileOps::transferFile(source, destination, hint, control);
        if (onTransfer)
            onTransfer(source, false);
        return made;
    }
    Result<CopiedFile> commitFile(CopyJob& job) override {
        if (onCommit)
            onCommit(job);
        return DiskFileOps::commitFile(job);
    }
    std::vector<dev_t> syncFileSystems() override {
        if (onSync)
            onSync();
        std::vector<dev_t> failed = DiskFileOps::syncFileSystems();
        failed.insert(failed.end(), failingDevices.cbegin(), failingDevices.cend());
        return failed;
    }
};

// A scratch directory with a source tree, destinations, a spec, settings and a log.
class StagingFixture {
public:
    QTemporaryDir dir;
    FixedScreen screen{9600, 7200};
    clsOndrelApp settings{screen, dir.path()};
    clsSpecFile spec;
    QStringList various{QString()};
    ScriptedHost host;
    HookedDiskOps ops;
    StagingLog log;
    std::unique_ptr<StagingRun> run;
    int workers = 1; // how many threads the run copies with

    QString path(const QString& relative) const { return dir.filePath(relative); }

    // Writes a file (making its directories) with a modification time of base + ageSeconds.
    void file(const QString& relative, const QByteArray& content = "data", qint64 mtime = 1000000) {
        const QString p = path(relative);
        QDir().mkpath(QFileInfo(p).absolutePath());
        QFile f(p);
        if (!f.open(QIODevice::WriteOnly) || f.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(p));
        f.close();
        setMtime(relative, mtime);
    }
    void setMtime(const QString& relative, qint64 mtime) {
        QFile f(path(relative));
        f.open(QIODevice::ReadWrite);
        f.setFileTime(QDateTime::fromSecsSinceEpoch(mtime), QFileDevice::FileModificationTime);
    }
    QByteArray read(const QString& relative) const {
        QFile f(path(relative));
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray("<missing>");
    }
    bool exists(const QString& relative) const { return QFileInfo::exists(path(relative)); }

    // Adds source path src (relative) with one group of masks going to the destinations.
    std::shared_ptr<clsFileGroup> group(const QString& src, const QString& masks,
                                        const QStringList& destinations, bool subDirs = false) {
        const QString name = src == "<various>" ? src : path(src);
        std::shared_ptr<clsSourcePath> sp;
        try {
            sp = spec.SPs().Item(name);
        } catch (const Error&) {
            sp = spec.SPs().Add(name);
        }
        sp->setInclSubDirs(subDirs);
        auto fg = sp->FGs().Add(masks);
        for (const QString& d : destinations)
            fg->DPs().Add(path(d));
        return fg;
    }

    // Runs the whole staging with a log; returns the log's lines.
    QStringList stage() {
        if (!log.open(path("Staging.log")).ok())
            qFatal("cannot open the log");
        run = std::make_unique<StagingRun>(spec, settings, various, host, ops, &log, dir.path());
        run->setWorkers(workers);
        run->run();
        QString text = QString::fromUtf8(read("Staging.log"));
        return text.split("\r\n");
    }

    // The "Copying" lines of a log, with the scratch directory taken out.
    QStringList copies(const QStringList& log) const {
        QStringList out;
        for (const QString& line : log)
            if (line.startsWith("Copying "))
                out << QString(line).remove(dir.path() + "/");
        return out;
    }
};

} // namespace ondrel::test
