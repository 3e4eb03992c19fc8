#pragma once

#include "platform/FileSystem.h"

#include <QByteArray>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace ondrel {

class CopyJob;
class WorkDirectory;
class RunPlan;
class StagingFileOps;

// Copies ahead of the run: workers transfer the files the run is about to reach (open the
// source, write the new file beside its destination without a name, set its times and bits)
// while the run's own thread walks, decides, asks, logs and commits in its order. A transfer
// changes nothing anyone can see: it takes a name only when the run, reaching its copy, commits
// it; one the run passes over is discarded. The window of work ahead is bounded in files and
// in bytes.
//
// A worker first looks at the destination. Where a file stands, it transfers only if the
// overwrite rule would replace that file (Always; If Older with the source newer): the run
// decides again on what it finds when it gets there. Either way the look leaves the
// destination's status fresh in the system's caches, so that the run's own look is cheap where
// each look is a round trip (a network file system), even on a re-run that copies nothing.
class TransferAhead {
public:
    static constexpr int kMaxFiles = 64;
    static constexpr qint64 kMaxBytes = qint64(64) << 20;

    // One transfer made ahead; the job holds on to the entry's paths and control.
    struct Entry {
        QByteArray source;
        QByteArray destination;
        QByteArray base; // the destination path it is in
        CopyControl control;
        std::atomic<bool> stop{false};
        std::unique_ptr<CopyJob> job; // once a transfer has succeeded
        ~Entry();

    private:
        friend class TransferAhead;
        enum class State { Waiting, Working, Done } state = State::Waiting;
        int failure = 0;           // the error number of a transfer that failed or was not made
        bool foundMissing = false; // the worker found nothing at the destination
        qint64 bytes = 0;
        // The source as a worker read it before the transfer began (nothing when it could not
        // be read), once read: its size is the window's room the transfer takes, its time what
        // If Older judges by.
        bool sourceRead = false;
        std::optional<FileStatus> sourceStatus;
        qint64 expected() const { return sourceStatus ? sourceStatus->size : 0; }
        // How often the transfer looked whether it was still wanted (between its chunks), and
        // how many of those looks the run has made its own.
        int looks = 0;
        int looksMirrored = 0;
    };

    // The workers open the plan's roots as the run's thread does. They are started with the
    // first transfer. overwrite: the run's overwrite mode.
    TransferAhead(StagingFileOps& ops, const RunPlan& plan, int workers, qint16 overwrite);
    // Every transfer not taken is discarded; the workers end.
    ~TransferAhead();
    TransferAhead(const TransferAhead&) = delete;
    TransferAhead& operator=(const TransferAhead&) = delete;

    bool hasRoom() const { return m_queue.size() < size_t(kMaxFiles); }
    // Whether the run should submit more: not before half the window is taken, so that the
    // workers are handed files in bunches, not woken for each file the run commits.
    bool wantsMore() const { return m_queue.size() <= size_t(kMaxFiles / 2); }
    // A copy the run may reach next, after those submitted before; base: the destination path
    // destination is in.
    void submit(const QByteArray& source, const QByteArray& destination, const QByteArray& base);
    // The transfer of source to destination, once it is complete, for the run to commit; the
    // ones submitted before it, which the run passed over, are discarded. Nothing when none was
    // submitted, no worker has begun it yet, or it failed: the run then copies the file itself,
    // as without workers (after a disk found full, once every transfer ahead is discarded and
    // its space free again).
    //
    // While it waits, the run looks at Cancel (keepGoing) each time the transfer looks whether
    // it is still wanted, as often as copying the file itself would have: the run answers a
    // Cancel as promptly, and at the same points. Nothing, with cancelled set, when keepGoing
    // said to stop.
    std::shared_ptr<Entry> take(const QByteArray& source, const QByteArray& destination,
                                const std::function<bool()>& keepGoing, bool& cancelled);
    // Whether take would give a complete transfer of source to a destination found missing,
    // now, without waiting.
    bool isReady(const QByteArray& source, const QByteArray& destination);
    // Gives up every transfer not yet taken, and waits until no worker is working on one.
    // Whether there was any.
    bool discardAll();

private:
    void startWorkers();
    void work();
    // m_mutex held. Whether the window has room for the transfer of entry (and the other
    // destinations of its source, count in all) to begin.
    bool hasRoomFor(const std::shared_ptr<Entry>& entry, size_t count) const;
    // The worker's look at the destination, and the transfer if it is worth making.
    Result<std::unique_ptr<CopyJob>> transfer(Entry& entry);
    // Whether the overwrite rule would replace dest, found standing, with entry's source.
    bool replaces(const Entry& entry, const FileStatus& dest) const;
    // The calling worker's directory of its own in destination path base, where the copies into
    // directory (a handle) that go by a temporary name are made; -1 for none (beside the
    // destination, then).
    static int temporariesIn(const QByteArray& base, int directory);
    // m_mutex held.
    void drop(const std::shared_ptr<Entry>& entry);

    StagingFileOps& m_ops;
    const RunPlan& m_plan;
    const int m_workerCount;
    const qint16 m_overwrite;
    std::mutex m_mutex;
    std::condition_variable m_work; // for the workers: a transfer to begin, or the end
    std::condition_variable m_done; // for the run: a transfer complete, or no worker working
    std::deque<std::shared_ptr<Entry>> m_queue; // in the run's order
    qint64 m_bytesDone = 0;                     // of the transfers complete and not yet taken
    qint64 m_bytesWorking = 0;                  // of the transfers being made
    bool m_windowWanted = false;                // a worker waits for room in the window
    int m_working = 0;
    const Entry* m_awaited = nullptr; // the transfer the run waits for
    bool m_draining = false;          // the run waits for every worker to stop working
    bool m_quit = false;
    std::vector<std::thread> m_workers;
    // Each worker's directories of its own, by destination path: removed once every transfer
    // is given up or committed and the workers have ended.
    std::vector<std::map<QByteArray, std::unique_ptr<WorkDirectory>>> m_workDirectories;
};

} // namespace ondrel
