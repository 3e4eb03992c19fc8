#include "platform/CrashPoint.h"

#include <unistd.h>

namespace ondrel {

void CrashPoint::arm(int n) {
    s_remaining = n;
}

void CrashPoint::countDown() {
    if (s_remaining.fetch_sub(1) == 1)
        ::_exit(kExitStatus);
}

} // namespace ondrel
