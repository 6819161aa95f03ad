#include "platform/Log.h"

#include <QByteArray>
#include <cstdio>
#include <utility>

#ifdef Q_OS_MACOS
#include <os/log.h>
#endif

namespace vantle {

namespace {
LogSink& currentSink() {
    static LogSink sink;
    return sink;
}
} // namespace

void logLine(const QString& message) {
    const QString line = QStringLiteral("Vantle: ") + message;
    if (const LogSink& sink = currentSink()) {
        sink(line);
        return;
    }
    const QByteArray utf8 = line.toUtf8();
#ifdef Q_OS_MACOS
    os_log(OS_LOG_DEFAULT, "%{public}s", utf8.constData());
#else
    std::fprintf(stderr, "%s\n", utf8.constData());
    std::fflush(stderr);
#endif
}

LogSink setLogSink(LogSink sink) {
    return std::exchange(currentSink(), std::move(sink));
}

} // namespace vantle
