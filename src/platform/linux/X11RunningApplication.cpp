#include "platform/linux/X11RunningApplication.h"

#include "platform/Log.h"
#include "platform/linux/X11Workspace.h"

#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle {

namespace {

int openPidfd(qint32 pid) {
#ifdef SYS_pidfd_open
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
#else
    Q_UNUSED(pid);
    errno = ENOSYS;
    return -1;
#endif
}

// Without a pidfd (kernels before 5.3): gone when no such process or when it is a zombie.
bool processGone(qint32 pid) {
    if (::kill(pid, 0) != 0 && errno == ESRCH) {
        return true;
    }
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return true;
    }
    const QByteArray text = stat.readAll();
    const qsizetype close = text.lastIndexOf(')');
    return close > 0 && close + 2 < text.size() && text.at(close + 2) == 'Z';
}

} // namespace

X11RunningApplication::X11RunningApplication(X11Workspace* workspace, qint32 pid)
    : m_workspace(workspace)
    , m_pid(pid)
    , m_pidfd(openPidfd(pid)) {}

X11RunningApplication::~X11RunningApplication() {
    if (m_pidfd >= 0) {
        ::close(m_pidfd);
    }
}

void X11RunningApplication::setIdentity(std::optional<QString> name,
                                        std::optional<QString> bundleId, QString iconName) {
    m_name = std::move(name);
    m_bundleId = std::move(bundleId);
    m_iconName = std::move(iconName);
    m_hasIdentity = true;
}

QIcon X11RunningApplication::icon() const {
    // Pixmaps need a GUI application; the command-line listing has none and shows no icons.
    if (m_iconResolved || !qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        return m_icon;
    }
    m_iconResolved = true;
    const QImage windowIcon = m_workspace ? m_workspace->windowIcon(m_pid) : QImage();
    if (!windowIcon.isNull()) {
        m_icon = QIcon(QPixmap::fromImage(windowIcon));
    } else if (!m_iconName.isEmpty()) {
        m_icon = QIcon::fromTheme(m_iconName);
    }
    return m_icon;
}

bool X11RunningApplication::isTerminated() const {
    if (m_pidfd < 0) {
        return processGone(m_pid);
    }
    // A pidfd becomes readable when its process exits, zombie or not.
    pollfd fd{m_pidfd, POLLIN, 0};
    return ::poll(&fd, 1, 0) > 0;
}

bool X11RunningApplication::terminate() {
    if (isTerminated() || !m_workspace) {
        return false;
    }
    if (m_workspace->closeWindows(m_pid) > 0) {
        return true;
    }
    // A polite quit goes through the application's windows; a signal could lose unsaved work.
    logLine(QStringLiteral("cannot ask %1 (pid %2) to quit: it has no window to close")
                .arg(m_name.value_or(QStringLiteral("Unknown")))
                .arg(m_pid));
    return false;
}

bool X11RunningApplication::forceTerminate() {
    if (isTerminated()) {
        return false;
    }
#ifdef SYS_pidfd_send_signal
    if (m_pidfd >= 0) {
        return ::syscall(SYS_pidfd_send_signal, m_pidfd, SIGKILL, nullptr, 0) == 0;
    }
#endif
    return ::kill(m_pid, SIGKILL) == 0;
}

bool X11RunningApplication::hide() {
    return !isTerminated() && m_workspace && m_workspace->iconifyWindows(m_pid) > 0;
}

} // namespace vantle
