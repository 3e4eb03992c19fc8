#pragma once

// Files made without a name in a directory, which are given their name only once complete: a
// copy stopped at any moment leaves nothing behind. Platform-internal, used by FileCopier.
namespace ondrel {

class UnnamedFiles {
public:
    // Whether to make them: no longer once this system has shown that it cannot name them.
    static bool usable();
    // For tests: every copy then goes by a temporary name, as on a file system without them.
    static void setUsable(bool usable);

    // Whether an open's errno says that the file system makes no such files.
    static bool unsupported(int e);

    // Gives the unnamed file fd the name name in directory dir (a handle or AT_FDCWD): 0 or an
    // errno value (EEXIST when the name is taken).
    static int link(int fd, int dir, const char* name);
};

} // namespace ondrel
