#pragma once

#include "platform/Workspace.h"

#include <QHash>

namespace vantle {

// A running application whose attributes tests set directly; it records what was asked of it.
class FakeRunningApplication final : public RunningApplication {
public:
    FakeRunningApplication(qint32 processId, std::optional<QString> displayName,
                           std::optional<QString> bundleIdentifier,
                           ActivationPolicy activation = ActivationPolicy::regular)
        : pid(processId)
        , name(std::move(displayName))
        , bundleId(std::move(bundleIdentifier))
        , policy(activation) {}

    qint32 processIdentifier() const override { return pid; }
    std::optional<QString> localizedName() const override { return name; }
    std::optional<QString> bundleIdentifier() const override { return bundleId; }
    ActivationPolicy activationPolicy() const override { return policy; }
    QIcon icon() const override { return {}; }
    bool isTerminated() const override { return terminated; }
    bool terminate() override;
    bool forceTerminate() override;
    bool hide() override;

    qint32 pid;
    std::optional<QString> name;
    std::optional<QString> bundleId;
    ActivationPolicy policy;
    bool terminated = false;
    // When true, a polite quit request is ignored (unsaved work, say).
    bool refusesToQuit = false;
    int terminateRequests = 0;
    int forceRequests = 0;
    int hideRequests = 0;
    // Set by FakeWorkspace so a quit removes the app from the list.
    class FakeWorkspace* workspace = nullptr;
};

class FakeWorkspace final : public Workspace {
    Q_OBJECT
public:
    bool isSupported() const override { return true; }
    QList<RunningApplicationRef> runningApplications() const override;
    RunningApplicationRef application(qint32 pid) const override;
    std::optional<qint32> frontmostApplication() const override { return frontmost; }

    // Adds an app at the end of the system's order; returns it for further setup.
    std::shared_ptr<FakeRunningApplication>
    add(qint32 pid, std::optional<QString> name, std::optional<QString> bundleId = std::nullopt,
        ActivationPolicy policy = ActivationPolicy::regular);
    // The process exits: it leaves the list and its handle reports terminated.
    void exit(qint32 pid);

    void emitLaunch(qint32 pid) { emit didLaunchApplication(application(pid)); }
    void emitTerminate(qint32 pid);

    std::optional<qint32> frontmost;
    QList<std::shared_ptr<FakeRunningApplication>> apps;
    int listCalls = 0;
};

} // namespace vantle
