#pragma once

#include "platform/Workspace.h"

namespace vantle {

// Stands in where the session gives no way to list applications (a Wayland compositor without
// an app-list protocol): an empty list and no events, reported once at start.
class UnsupportedWorkspace final : public Workspace {
    Q_OBJECT
public:
    explicit UnsupportedWorkspace(const QString& reason, QObject* parent = nullptr);

    bool isSupported() const override { return false; }
    QList<RunningApplicationRef> runningApplications() const override { return {}; }
    RunningApplicationRef application(qint32) const override { return nullptr; }
    std::optional<qint32> frontmostApplication() const override { return std::nullopt; }
};

} // namespace vantle
