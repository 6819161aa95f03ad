#include "app/TerminationSignals.h"

#include "platform/Log.h"

#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace vantle {

namespace {

int g_pipe[2] = {-1, -1};

extern "C" void onTerminationSignal(int signalNumber) {
    const char byte = static_cast<char>(signalNumber);
    // Only async-signal-safe calls here; a full pipe just drops the repeat.
    [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent) {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_pipe) != 0) {
        logLine(QStringLiteral("cannot watch for SIGINT/SIGTERM: %1")
                    .arg(QString::fromLocal8Bit(std::strerror(errno))));
        return;
    }
    ::fcntl(g_pipe[1], F_SETFL, O_NONBLOCK);
    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::readSignal);

    struct sigaction action {};
    action.sa_handler = onTerminationSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGINT, &action, nullptr);
    ::sigaction(SIGTERM, &action, nullptr);
}

TerminationSignals::~TerminationSignals() {
    if (!m_notifier) {
        return;
    }
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}

void TerminationSignals::readSignal() {
    char byte = 0;
    if (::read(g_pipe[0], &byte, 1) == 1) {
        emit terminationRequested(static_cast<int>(byte));
    }
}

} // namespace vantle
