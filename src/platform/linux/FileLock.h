#pragma once

#include <QString>
#include <optional>

namespace vantle {

// An advisory lock on a file (flock). The kernel drops it the moment its holder exits, however it
// exits, so a lock file left behind by a killed process - empty, or naming a dead pid - never
// stands in anyone's way. The file itself stays: removing a lock file races with its next user.
class FileLock {
public:
    enum class Result {
        Acquired,
        Busy,   // another open of the file holds it
        Failed, // the file cannot be opened; errorString() says why
    };

    explicit FileLock(QString path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Never waits. Once acquired, the holder's pid is written into the file for people and logs.
    Result tryLock();
    void unlock();
    bool isLocked() const { return m_fd >= 0; }

    QString path() const { return m_path; }
    QString errorString() const { return m_error; }

    // The pid the current (or last) holder wrote, when the file names one.
    std::optional<qint64> holderPid() const;

private:
    QString m_path;
    QString m_error;
    int m_fd = -1;
};

} // namespace vantle
