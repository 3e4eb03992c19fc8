#include "staging/TransferAhead.h"

#include "platform/CopyJob.h"
#include "platform/DirectoryHandles.h"
#include "staging/RunPlan.h"
#include "staging/StagingFileOps.h"

#include <algorithm>

#include <pthread.h>
#include <signal.h>

namespace ondrel {

TransferAhead::Entry::~Entry() = default;

TransferAhead::TransferAhead(StagingFileOps& ops, const RunPlan& plan, int workers) : m_ops(ops) {
    for (int i = 0; i < workers; ++i)
        m_workers.emplace_back([this, &plan] { work(plan); });
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
}

void TransferAhead::submit(const QByteArray& source, const QByteArray& destination) {
    // Copies of the entry's own: a worker's reads of them never share a buffer that another
    // thread may free.
    auto entry = std::make_shared<Entry>();
    entry->source = QByteArray(source.constData(), source.size());
    entry->destination = QByteArray(destination.constData(), destination.size());
    Entry* raw = entry.get();
    entry->control.keepGoing = [raw] {
        ++raw->looks;
        return !raw->stop.load(std::memory_order_relaxed);
    };
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
                                                          const QByteArray& destination) {
    std::shared_ptr<Entry> found;
    std::vector<std::shared_ptr<Entry>> passedOver; // taken back outside the lock
    bool diskFull = false;
    {
        std::unique_lock lock(m_mutex);
        while (!m_queue.empty() &&
               (m_queue.front()->source != source || m_queue.front()->destination != destination)) {
            drop(m_queue.front());
            passedOver.push_back(std::move(m_queue.front()));
            m_queue.pop_front();
        }
        if (m_queue.empty())
            return nullptr;
        // First in line, it is never held back by the window's bytes.
        m_done.wait(lock, [&] { return m_queue.front()->state == Entry::State::Done; });
        found = std::move(m_queue.front());
        m_queue.pop_front();
        const bool wasFull = m_bytesDone >= kMaxBytes;
        m_bytesDone -= found->bytes;
        if (wasFull)
            m_work.notify_all(); // the window has room again
        if (!found->job) {
            diskFull = found->failure == ErrNo::DiskFull;
            found.reset();
        }
    }
    passedOver.clear();
    if (diskFull)
        discardAll();
    return found;
}

bool TransferAhead::discardAll() {
    std::deque<std::shared_ptr<Entry>> dropped;
    {
        std::unique_lock lock(m_mutex);
        for (const std::shared_ptr<Entry>& entry : m_queue)
            drop(entry);
        dropped.swap(m_queue);
        m_work.notify_all();
        m_done.wait(lock, [&] { return m_working == 0; });
    }
    return !dropped.empty();
}

void TransferAhead::work(const RunPlan& plan) {
    // Signals (Ctrl-C above all) go to the run's thread, whose questions wait for them.
    sigset_t all;
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, nullptr);
    // The worker's own handles on the directories it copies into, opened from the roots as the
    // run's are: no link planted below a root is followed here either.
    const DirectoryHandles::Scope handles;
    plan.addRoots();
    std::unique_lock lock(m_mutex);
    for (;;) {
        std::shared_ptr<Entry> entry;
        m_work.wait(lock, [&] {
            if (m_quit)
                return true;
            const auto waiting = std::find_if(m_queue.begin(), m_queue.end(), [](const auto& e) {
                return e->state == Entry::State::Waiting;
            });
            if (waiting == m_queue.end())
                return false;
            // Beyond the first in line, no transfer begins while the finished ones waiting
            // for their commit hold the window's bytes.
            if (waiting != m_queue.begin() && m_bytesDone >= kMaxBytes)
                return false;
            entry = *waiting;
            return true;
        });
        if (m_quit)
            return;
        entry->state = Entry::State::Working;
        ++m_working;
        lock.unlock();

        std::unique_ptr<CopyJob> job;
        int failure = ErrNo::CancelSelected;
        if (!entry->stop) {
            Result<std::unique_ptr<CopyJob>> made =
                m_ops.transferFile(entry->source, entry->destination, kLargestFile, entry->control);
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
        --m_working;
        m_done.notify_one();
        entry.reset();
    }
}

} // namespace ondrel
