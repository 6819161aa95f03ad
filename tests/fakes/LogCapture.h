#pragma once

#include "platform/Log.h"

#include <QStringList>

namespace vantle {

// Collects the product's log lines for the lifetime of the object.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    QStringList lines;
    // Lines containing `fragment`.
    int count(const QString& fragment) const;

private:
    LogSink m_previous;
};

} // namespace vantle
