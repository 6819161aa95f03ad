#include "platform/linux/FileLock.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace vantle {

namespace {

QString errnoText(int error) {
    return QString::fromLocal8Bit(std::strerror(error));
}

} // namespace

FileLock::FileLock(QString path)
    : m_path(std::move(path)) {}

FileLock::~FileLock() {
    unlock();
}

FileLock::Result FileLock::tryLock() {
    if (m_fd >= 0) {
        return Result::Acquired;
    }
    const QByteArray native = QFile::encodeName(m_path);
    bool writable = true;
    int fd = ::open(native.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0 && (errno == EACCES || errno == EROFS)) {
        // A lock file we may not write still locks: flock needs only an open descriptor.
        writable = false;
        fd = ::open(native.constData(), O_RDONLY | O_CLOEXEC);
    }
    if (fd < 0) {
        m_error = errnoText(errno);
        return Result::Failed;
    }
    int status = 0;
    do {
        status = ::flock(fd, LOCK_EX | LOCK_NB);
    } while (status != 0 && errno == EINTR);
    if (status != 0) {
        const int error = errno;
        ::close(fd);
        if (error == EWOULDBLOCK) {
            return Result::Busy;
        }
        m_error = errnoText(error);
        return Result::Failed;
    }
    m_fd = fd;
    m_error.clear();
    if (writable) {
        const QByteArray pid = QByteArray::number(static_cast<qint64>(::getpid())) + '\n';
        if (::ftruncate(fd, 0) == 0) {
            [[maybe_unused]] const ssize_t written =
                ::pwrite(fd, pid.constData(), static_cast<size_t>(pid.size()), 0);
        }
    }
    return Result::Acquired;
}

void FileLock::unlock() {
    if (m_fd >= 0) {
        // Closing the only descriptor releases the lock.
        ::close(m_fd);
        m_fd = -1;
    }
}

std::optional<qint64> FileLock::holderPid() const {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    bool ok = false;
    const qint64 pid = file.readLine(32).trimmed().toLongLong(&ok);
    return ok && pid > 0 ? std::optional(pid) : std::nullopt;
}

} // namespace vantle
