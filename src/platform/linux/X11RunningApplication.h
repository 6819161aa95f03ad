#pragma once

#include "platform/RunningApplication.h"

#include <QPointer>

namespace vantle {

class X11Workspace;

// One process with windows or a tray icon on the X display. A pidfd pins the process instance,
// so the handle stays terminated even after its pid is reused and a kill never hits a stranger.
class X11RunningApplication final : public RunningApplication {
public:
    X11RunningApplication(X11Workspace* workspace, qint32 pid);
    ~X11RunningApplication() override;
    X11RunningApplication(const X11RunningApplication&) = delete;
    X11RunningApplication& operator=(const X11RunningApplication&) = delete;

    qint32 processIdentifier() const override { return m_pid; }
    std::optional<QString> localizedName() const override { return m_name; }
    std::optional<QString> bundleIdentifier() const override { return m_bundleId; }
    ActivationPolicy activationPolicy() const override { return m_policy; }
    QIcon icon() const override;
    bool isTerminated() const override;
    bool terminate() override;
    bool forceTerminate() override;
    bool hide() override;

    // Filled in by the workspace.
    void setIdentity(std::optional<QString> name, std::optional<QString> bundleId,
                     QString iconName);
    void setPolicy(ActivationPolicy policy) { m_policy = policy; }
    bool hasIdentity() const { return m_hasIdentity; }

private:
    QPointer<X11Workspace> m_workspace;
    qint32 m_pid;
    int m_pidfd = -1;
    std::optional<QString> m_name;
    std::optional<QString> m_bundleId;
    QString m_iconName;
    mutable QIcon m_icon;
    mutable bool m_iconResolved = false;
    ActivationPolicy m_policy = ActivationPolicy::regular;
    bool m_hasIdentity = false;
};

} // namespace vantle
