#include "platform/WorkDirectory.h"

#include "platform/FileCopier.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel {

std::unique_ptr<WorkDirectory> WorkDirectory::make(int parent) {
    std::unique_ptr<WorkDirectory> work(new WorkDirectory);
    work->m_parent.reset(::fcntl(parent, F_DUPFD_CLOEXEC, 0));
    if (!work->m_parent)
        return nullptr;
    static const qint64 pid = ::getpid();
    for (int attempt = 0; attempt < 100 && work->m_name.isEmpty(); ++attempt) {
        const QByteArray name = FileCopier::temporaryName("copies", pid);
        if (::mkdirat(parent, name.constData(), 0700) == 0)
            work->m_name = name;
        else if (errno != EEXIST)
            return nullptr;
    }
    if (work->m_name.isEmpty())
        return nullptr;
    // Opened without following a link: the name is ours, but the directory it is in may be
    // writable by others, who could have put something else there meanwhile.
    work->m_dir.reset(::openat(parent, work->m_name.constData(),
                               O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat st {};
    if (!work->m_dir || ::fstat(work->m_dir.get(), &st) != 0 || st.st_uid != ::geteuid() ||
        (st.st_mode & 077) != 0)
        return nullptr;
    work->m_device = st.st_dev;
    return work;
}

WorkDirectory::~WorkDirectory() {
    // Only an empty directory is removed: a copy still in it is left for the next run.
    if (!m_name.isEmpty())
        ::unlinkat(m_parent.get(), m_name.constData(), AT_REMOVEDIR);
}

} // namespace ondrel
