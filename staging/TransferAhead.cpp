#include "staging/TransferAhead.h"

#include "app/Module1.h"
#include "platform/CopyJob.h"
#include "platform/DirectoryHandles.h"
#include "platform/WorkDirectory.h"
#include "staging/RunPlan.h"
#include "staging/StagingFileOps.h"

#include <algorithm>

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

namespace ondrel {

namespace {

// The directories of its own of the worker running on this thread.
thread_local std::map<QByteArray, std::unique_ptr<WorkDirectory>>* t_workDirectories = nullptr;

} // namespace

TransferAhead::Entry::~Entry() = default;

TransferAhead::TransferAhead(StagingFileOps& ops, const RunPlan& plan, int workers,
                             qint16 overwrite)
    : m_ops(ops), m_plan(plan), m_workerCount(workers), m_overwrite(overwrite) {}

void TransferAhead::startWorkers() {
    m_workDirectories.resize(size_t(m_workerCount));
    for (int i = 0; i < m_workerCount; ++i)
        m_workers.emplace_back([this, i] {
            t_workDirectories = &m_workDirectories[size_t(i)];
            work();
        });
}

TransferAhead::~TransferAhead() {
    discardAll();
    {
        const std::lock_guard lock(m_mutex);
        m_quit = true;
    }
    m_work.notify_all();
    for (std::thread& worker : m_workers)
        worker.join();
    m_workDirectories.clear(); // after every transfer made in them was committed or given up
}

void TransferAhead::submit(const QByteArray& source, const QByteArray& destination,
                           const QByteArray& base) {
    // Copies of the entry's own: a worker's reads of them never share a buffer that another
    // thread may free.
    auto entry = std::make_shared<Entry>();
    entry->source = QByteArray(source.constData(), source.size());
    entry->destination = QByteArray(destination.constData(), destination.size());
    entry->base = QByteArray(base.constData(), base.size());
    Entry* raw = entry.get();
    entry->control.temporariesIn = [raw](int directory) {
        return temporariesIn(raw->base, directory);
    };
    entry->control.keepGoing = [this, raw] {
        bool awaited = false;
        {
            const std::lock_guard lock(m_mutex);
            ++raw->looks;
            awaited = raw == m_awaited;
        }
        if (awaited)
            m_done.notify_all(); // the run waiting for this transfer makes the look its own
        return !raw->stop.load(std::memory_order_relaxed);
    };
    if (m_workers.empty())
        startWorkers();
    {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(std::move(entry));
    }
    m_work.notify_one();
}

void TransferAhead::drop(const std::shared_ptr<Entry>& entry) {
    if (entry->state == Entry::State::Done && !entry->stop)
        m_bytesDone -= entry->bytes;
    entry->stop = true;
}

std::shared_ptr<TransferAhead::Entry> TransferAhead::take(const QByteArray& source,
                                                          const QByteArray& destination,
                                                          const std::function<bool()>& keepGoing,
                                                          bool& cancelled) {
    cancelled = false;
    std::shared_ptr<Entry> found;
    std::vector<std::shared_ptr<Entry>> passedOver; // taken back outside the lock
    bool diskFull = false;
    {
        std::unique_lock lock(m_mutex);
        // Whatever leaves the window, and a new first in line, may let a transfer that waits
        // for room begin.
        const auto released = [&] {
            if (m_windowWanted) {
                m_windowWanted = false;
                m_work.notify_all();
            }
        };
        while (!m_queue.empty() &&
               (m_queue.front()->source != source || m_queue.front()->destination != destination)) {
            drop(m_queue.front());
            passedOver.push_back(std::move(m_queue.front()));
            m_queue.pop_front();
        }
        if (m_queue.empty()) {
            released();
            return nullptr;
        }
        found = m_queue.front();
        if (found->state == Entry::State::Waiting) {
            // Every worker is busy: the run copies this one itself rather than wait.
            drop(found);
            m_queue.pop_front();
            released();
            return nullptr;
        }
        released();
        // First in line, it is never held back by the window's bytes. The run is woken for
        // this transfer only, not for every other one that a worker finishes.
        m_awaited = found.get();
        for (;;) {
            m_done.wait(lock, [&] {
                return found->state == Entry::State::Done || found->looks > found->looksMirrored;
            });
            // Looked at after the transfer has ended too: as many looks as it made.
            while (found->looks > found->looksMirrored) {
                ++found->looksMirrored;
                lock.unlock();
                const bool goOn = keepGoing();
                lock.lock();
                if (!goOn) {
                    cancelled = true;
                    break;
                }
            }
            if (cancelled || found->state == Entry::State::Done)
                break;
        }
        m_awaited = nullptr;
        if (cancelled && found->state != Entry::State::Done) {
            // Still at work: it stops at its next look, and its copy is taken back there.
            drop(found);
            m_queue.pop_front();
            released();
            return nullptr;
        }
        m_queue.pop_front();
        m_bytesDone -= found->bytes;
        released();
        if (!found->job || cancelled) {
            diskFull = !cancelled && found->failure == ErrNo::DiskFull;
            passedOver.push_back(std::move(found));
        }
    }
    passedOver.clear();
    if (diskFull)
        discardAll();
    return found;
}

bool TransferAhead::isReady(const QByteArray& source, const QByteArray& destination) {
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_queue.cbegin(), m_queue.cend(), [&](const auto& e) {
        return e->source == source && e->destination == destination;
    });
    return found != m_queue.cend() && (*found)->state == Entry::State::Done && (*found)->job &&
           (*found)->foundMissing && !(*found)->stop;
}

bool TransferAhead::discardAll() {
    std::deque<std::shared_ptr<Entry>> dropped;
    {
        std::unique_lock lock(m_mutex);
        for (const std::shared_ptr<Entry>& entry : m_queue)
            drop(entry);
        dropped.swap(m_queue);
        m_work.notify_all();
        m_draining = true;
        m_done.wait(lock, [&] { return m_working == 0; });
        m_draining = false;
    }
    return !dropped.empty();
}

Result<std::unique_ptr<CopyJob>> TransferAhead::transfer(Entry& entry) {
    const Result<FileStatus> found = m_ops.status(entry.destination, StatusDetail::Probe);
    DestinationHint hint = DestinationHint::Unknown;
    if (found.ok()) {
        if (!replaces(entry, found.value()))
            return Error(ErrNo::PathFileAccess); // left to the run, which decides on it
    } else if (const int number = found.error().number();
               number == ErrNo::FileNotFound || number == ErrNo::PathNotFound) {
        hint = DestinationHint::Missing;
        entry.foundMissing = true;
    }
    return m_ops.transferFile(entry.source, entry.destination, hint, entry.control);
}

int TransferAhead::temporariesIn(const QByteArray& base, int directory) {
    if (!t_workDirectories)
        return -1;
    auto found = t_workDirectories->find(base);
    if (found == t_workDirectories->end()) {
        // Made on the first copy into base that needs one (base is there by then). What a
        // killed run left there is the run's to remove, on its first write below base.
        std::unique_ptr<WorkDirectory> made;
        if (const int parent = DirectoryHandles::handleOf(base); parent >= 0)
            made = WorkDirectory::make(parent);
        found = t_workDirectories->emplace(base, std::move(made)).first;
    }
    struct stat st {};
    // A directory below base may be another file system's, which a rename cannot reach.
    if (!found->second || ::fstat(directory, &st) != 0 || st.st_dev != found->second->device())
        return -1;
    return found->second->handle();
}

bool TransferAhead::replaces(const Entry& entry, const FileStatus& dest) const {
    switch (m_overwrite) {
    case OverwriteMode::Always:
        return true;
    case OverwriteMode::IfOlder:
        return entry.sourceStatus && entry.sourceStatus->modified > dest.modified;
    default: // Prompt waits for the user's answer; Never keeps what stands
        return false;
    }
}

bool TransferAhead::hasRoomFor(const std::shared_ptr<Entry>& entry, size_t count) const {
    // The first in line is never held back; nor is a transfer when nothing else is in the
    // window, however large its file.
    const qint64 taken = m_bytesDone + m_bytesWorking;
    if (entry == m_queue.front() || taken == 0)
        return true;
    if (!entry->sourceRead)
        return taken < kMaxBytes;
    return taken + entry->expected() * qint64(count) <= kMaxBytes;
}

void TransferAhead::work() {
    // Signals (Ctrl-C above all) go to the run's thread, whose questions wait for them.
    sigset_t all;
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    // The worker's own handles on the directories it copies into, opened from the roots as the
    // run's are: no link planted below a root is followed here either.
    const DirectoryHandles::Scope handles;
    m_plan.addRoots();
    std::unique_lock lock(m_mutex);
    std::vector<std::shared_ptr<Entry>> batch;
    for (;;) {
        m_work.wait(lock, [&] {
            if (m_quit)
                return true;
            const auto waiting = std::find_if(m_queue.begin(), m_queue.end(), [](const auto& e) {
                return e->state == Entry::State::Waiting;
            });
            if (waiting == m_queue.end())
                return false;
            // A file bound for several destinations is copied to each by the same worker, in
            // turn, so that it is opened and read once.
            size_t count = 0;
            for (auto e = waiting; e != m_queue.end() && (*e)->state == Entry::State::Waiting &&
                                   (*e)->source == (*waiting)->source;
                 ++e)
                ++count;
            // Beyond the first in line, no transfer begins while the finished ones waiting for
            // their commit and the ones being made would hold more than the window's bytes.
            if (!hasRoomFor(*waiting, count)) {
                m_windowWanted = true;
                return false;
            }
            batch.assign(waiting, waiting + std::ptrdiff_t(count));
            return true;
        });
        if (m_quit)
            return;
        for (const std::shared_ptr<Entry>& entry : batch)
            entry->state = Entry::State::Working;
        ++m_working;
        // The size is read before the transfer begins, so that the window bounds the bytes
        // being written as well as those written: a few large files could otherwise fill the
        // disk with copies the run has not reached.
        if (!batch.front()->sourceRead) {
            lock.unlock();
            const Result<FileStatus> from =
                m_ops.status(batch.front()->source, StatusDetail::WithoutAttributes);
            lock.lock();
            for (const std::shared_ptr<Entry>& entry : batch) {
                entry->sourceRead = true;
                if (from.ok())
                    entry->sourceStatus = from.value();
            }
            const bool stillQueued = !batch.front()->stop;
            if (stillQueued && !hasRoomFor(batch.front(), batch.size())) {
                // Held back until the window has room: left for a worker (or the run) to
                // begin then.
                for (const std::shared_ptr<Entry>& entry : batch)
                    entry->state = Entry::State::Waiting;
                m_windowWanted = true;
                batch.clear();
                if (--m_working == 0 && m_draining)
                    m_done.notify_all();
                continue;
            }
        }
        const qint64 reserved = batch.front()->expected() * qint64(batch.size());
        m_bytesWorking += reserved;
        for (std::shared_ptr<Entry>& entry : batch) {
            lock.unlock();
            std::unique_ptr<CopyJob> job;
            int failure = ErrNo::CancelSelected;
            if (!entry->stop) {
                Result<std::unique_ptr<CopyJob>> made = transfer(*entry);
                if (made.ok())
                    job = std::move(made.value());
                else
                    failure = made.error().number();
            }
            const qint64 bytes = job ? job->sourceSize() : 0;
            if (entry->stop)
                job.reset(); // given up meanwhile: taken back here, on the worker's handles

            lock.lock();
            entry->job = std::move(job);
            entry->failure = failure;
            entry->bytes = bytes;
            entry->state = Entry::State::Done;
            if (entry->stop)
                entry->bytes = 0;
            else
                m_bytesDone += bytes;
            if (entry.get() == m_awaited)
                m_done.notify_all();
            entry.reset();
        }
        batch.clear();
        m_bytesWorking -= reserved;
        if (m_windowWanted) { // a transfer given up left the window
            m_windowWanted = false;
            m_work.notify_all();
        }
        if (--m_working == 0 && m_draining)
            m_done.notify_all();
    }
}

} // namespace ondrel
