#pragma once

#include <QString>
#include <functional>

namespace vantle {

// Writes one of the product's own log lines, "Vantle: <message>": to stderr (and so to the
// journal) on Linux, to the unified log on macOS.
void logLine(const QString& message);

// Redirects logLine() to `sink` (tests capture lines this way); an empty function restores the
// platform log. Returns the previous sink.
using LogSink = std::function<void(const QString& line)>;
LogSink setLogSink(LogSink sink);

} // namespace vantle
