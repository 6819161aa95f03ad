#include "fakes/LogCapture.h"

namespace vantle {

LogCapture::LogCapture()
    : m_previous(setLogSink([this](const QString& line) { lines.append(line); })) {}

LogCapture::~LogCapture() {
    setLogSink(m_previous);
}

int LogCapture::count(const QString& fragment) const {
    return static_cast<int>(std::count_if(lines.cbegin(), lines.cend(), [&](const QString& line) {
        return line.contains(fragment);
    }));
}

} // namespace vantle
