#pragma once

#include <atomic>

namespace ondrel {

// Lets a test end the process at the N-th change that the platform layer makes on disk (a file
// created, written, renamed or deleted, a directory made, attributes set), to prove that a run
// stopped at any moment loses nothing. Never armed in normal use, where it costs one test of a
// flag per change.
class CrashPoint {
public:
    // The process ends (exit status kExitStatus, no clean-up) at the n-th change from now on.
    static void arm(int n);
    // Called just before each change.
    static void reached() {
        if (s_remaining.load(std::memory_order_relaxed) > 0)
            countDown();
    }

    static constexpr int kExitStatus = 86;

private:
    static void countDown();
    // Counted down by every thread that changes the disk.
    static inline std::atomic<int> s_remaining = 0;
};

} // namespace ondrel
