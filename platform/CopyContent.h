#pragma once

#include <QtGlobal>

#include <functional>
#include <utility>

struct stat;

namespace ondrel {

// The data of a copy, by the cheapest means the file systems offer, in the order they are
// tried: a shared extent (clone), an in-kernel copy (copy_file_range), reading and writing. A
// file with holes keeps them.
namespace CopyContent {

// Whether the caller still wants the copy; asked between chunks, never before the first, so
// that a file that fits in one chunk is always finished. A copy stopped this way fails with
// ECANCELED.
struct Stop {
    const std::function<bool()>& keepGoing;
    mutable bool started = false;
    bool requested() const { return std::exchange(started, true) && keepGoing && !keepGoing(); }
};

// The first source.st_size bytes of in to out (all of in when the size is 0: a pseudo-file's
// content only reading reveals). 0 or an errno value.
int copy(int in, int out, const struct stat& source, const Stop& stop);

} // namespace CopyContent

} // namespace ondrel
