// delayfs: a FUSE file system that mirrors a backing directory and waits a fixed time in every
// operation that reaches it, as a network file system waits a round trip per call. bench/run
// copies into it to show what copying ahead with several workers gains where each call waits.
//
//   delayfs BACKING MOUNTPOINT [-o delay_us=N] [FUSE options]
//
// The wait defaults to 1000 microseconds. Requests are served by several threads (never pass
// -s), so callers working in parallel wait in parallel. As a network file system's client does,
// the kernel keeps names and attributes it has looked up for a second (libfuse's default), and
// libfuse reads a file's attributes again after creating it or changing them, which is a second
// wait. Extended attributes are left out: the kernel then tells callers they are not supported,
// as many network file systems do. Unnamed files (O_TMPFILE) are refused by the kernel: libfuse
// has no operation for them.

#define FUSE_USE_VERSION 31

#include <fuse.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

// A named namespace: the operations bear the names of the calls they make, which are taken
// from the global namespace.
namespace delayfs {

struct Options {
    char* backing = nullptr;
    unsigned delayUs = 1000;
};
Options options;
int root = -1; // the backing directory, which every path is taken relative to

// The round trip: taken before the call, so that it never disturbs the call's errno.
void roundTrip() {
    timespec left{time_t(options.delayUs / 1000000), long(options.delayUs % 1000000) * 1000};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}

// The mount's paths begin with '/'; the backing directory's are relative to its handle.
const char* at(const char* path) {
    return path[1] ? path + 1 : ".";
}

int done(int r) {
    return r == -1 ? -errno : 0;
}

void* init(fuse_conn_info*, fuse_config* cfg) {
    cfg->use_ino = 1; // the backing store's inode numbers: hard links and same-file checks hold
    return nullptr;
}

int getattr(const char* path, struct stat* st, fuse_file_info* fi) {
    roundTrip();
    return done(fi ? ::fstat(int(fi->fh), st) : ::fstatat(root, at(path), st, AT_SYMLINK_NOFOLLOW));
}

int readlink(const char* path, char* buf, size_t size) {
    roundTrip();
    const ssize_t n = ::readlinkat(root, at(path), buf, size - 1);
    if (n == -1)
        return -errno;
    buf[n] = '\0';
    return 0;
}

int mkdir(const char* path, mode_t mode) {
    roundTrip();
    return done(::mkdirat(root, at(path), mode));
}

int unlink(const char* path) {
    roundTrip();
    return done(::unlinkat(root, at(path), 0));
}

int rmdir(const char* path) {
    roundTrip();
    return done(::unlinkat(root, at(path), AT_REMOVEDIR));
}

int symlink(const char* target, const char* path) {
    roundTrip();
    return done(::symlinkat(target, root, at(path)));
}

int rename(const char* from, const char* to, unsigned int flags) {
    roundTrip();
    return done(::renameat2(root, at(from), root, at(to), flags));
}

int link(const char* from, const char* to) {
    roundTrip();
    return done(::linkat(root, at(from), root, at(to), 0));
}

int chmod(const char* path, mode_t mode, fuse_file_info* fi) {
    roundTrip();
    return done(fi ? ::fchmod(int(fi->fh), mode) : ::fchmodat(root, at(path), mode, 0));
}

int chown(const char* path, uid_t uid, gid_t gid, fuse_file_info* fi) {
    roundTrip();
    return done(fi ? ::fchown(int(fi->fh), uid, gid)
                   : ::fchownat(root, at(path), uid, gid, AT_SYMLINK_NOFOLLOW));
}

int truncate(const char* path, off_t size, fuse_file_info* fi) {
    roundTrip();
    if (fi)
        return done(::ftruncate(int(fi->fh), size));
    const int fd = ::openat(root, at(path), O_WRONLY | O_CLOEXEC);
    if (fd == -1)
        return -errno;
    const int r = done(::ftruncate(fd, size));
    ::close(fd);
    return r;
}

int utimens(const char* path, const timespec times[2], fuse_file_info* fi) {
    roundTrip();
    return done(fi ? ::futimens(int(fi->fh), times)
                   : ::utimensat(root, at(path), times, AT_SYMLINK_NOFOLLOW));
}

int create(const char* path, mode_t mode, fuse_file_info* fi) {
    roundTrip();
    const int fd = ::openat(root, at(path), fi->flags | O_CLOEXEC, mode);
    if (fd == -1)
        return -errno;
    fi->fh = uint64_t(fd);
    return 0;
}

int open(const char* path, fuse_file_info* fi) {
    roundTrip();
    const int fd = ::openat(root, at(path), fi->flags | O_CLOEXEC);
    if (fd == -1)
        return -errno;
    fi->fh = uint64_t(fd);
    return 0;
}

int read(const char*, char* buf, size_t size, off_t offset, fuse_file_info* fi) {
    roundTrip();
    const ssize_t n = ::pread(int(fi->fh), buf, size, offset);
    return n == -1 ? -errno : int(n);
}

int write(const char*, const char* buf, size_t size, off_t offset, fuse_file_info* fi) {
    roundTrip();
    const ssize_t n = ::pwrite(int(fi->fh), buf, size, offset);
    return n == -1 ? -errno : int(n);
}

int statfs(const char*, struct statvfs* st) {
    roundTrip();
    return done(::fstatvfs(root, st));
}

// Sent on every close(), which waits for it: where a network file system makes sure the data
// has arrived.
int flush(const char*, fuse_file_info*) {
    roundTrip();
    return 0;
}

int release(const char*, fuse_file_info* fi) {
    roundTrip();
    ::close(int(fi->fh));
    return 0;
}

int fsync(const char*, int dataOnly, fuse_file_info* fi) {
    roundTrip();
    return done(dataOnly ? ::fdatasync(int(fi->fh)) : ::fsync(int(fi->fh)));
}

// The whole directory in one go (offsets of 0): libfuse keeps it for the reads that follow.
int readdir(const char* path, void* buf, fuse_fill_dir_t fill, off_t, fuse_file_info*,
            fuse_readdir_flags) {
    roundTrip();
    const int fd = ::openat(root, at(path), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd == -1)
        return -errno;
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        const int e = errno;
        ::close(fd);
        return -e;
    }
    while (const dirent* entry = ::readdir(dir)) {
        struct stat st {};
        st.st_ino = entry->d_ino;
        st.st_mode = mode_t(entry->d_type) << 12;
        if (fill(buf, entry->d_name, &st, 0, fuse_fill_dir_flags(0)))
            break;
    }
    ::closedir(dir);
    return 0;
}

fuse_operations operations() {
    fuse_operations ops{};
    ops.init = init;
    ops.getattr = getattr;
    ops.readlink = readlink;
    ops.mkdir = mkdir;
    ops.unlink = unlink;
    ops.rmdir = rmdir;
    ops.symlink = symlink;
    ops.rename = rename;
    ops.link = link;
    ops.chmod = chmod;
    ops.chown = chown;
    ops.truncate = truncate;
    ops.utimens = utimens;
    ops.create = create;
    ops.open = open;
    ops.read = read;
    ops.write = write;
    ops.statfs = statfs;
    ops.flush = flush;
    ops.release = release;
    ops.fsync = fsync;
    ops.readdir = readdir;
    return ops;
}

// The first argument that is not an option is the backing directory; the next, the mount point,
// is left to libfuse.
int takeBacking(void* data, const char* arg, int key, fuse_args*) {
    auto* o = static_cast<Options*>(data);
    if (key == FUSE_OPT_KEY_NONOPT && !o->backing) {
        o->backing = ::strdup(arg);
        return 0;
    }
    return 1;
}

} // namespace delayfs

int main(int argc, char* argv[]) {
    using namespace delayfs;
    fuse_args args = FUSE_ARGS_INIT(argc, argv);
    const fuse_opt specs[] = {{"delay_us=%u", offsetof(Options, delayUs), 0}, FUSE_OPT_END};
    if (fuse_opt_parse(&args, &options, specs, takeBacking) != 0)
        return 1;
    if (!options.backing) {
        std::fprintf(stderr, "usage: %s BACKING MOUNTPOINT [-o delay_us=N] [FUSE options]\n",
                     argv[0]);
        return 1;
    }
    root = ::open(options.backing, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root == -1) {
        std::perror(options.backing);
        return 1;
    }
    // The kernel checks permissions on the modes the backing store reports.
    fuse_opt_add_arg(&args, "-odefault_permissions");
    const fuse_operations ops = operations();
    const int status = fuse_main(args.argc, args.argv, &ops, nullptr);
    fuse_opt_free_args(&args);
    return status;
}
