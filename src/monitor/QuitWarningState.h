#pragma once

#include "model/AppInfo.h"
#include "system/CountdownState.h"

#include <QList>

namespace vantle {

// The pending auto-quit batch and its countdown, observed by the countdown panel.
class QuitWarningState final : public CountdownState {
    Q_OBJECT
    Q_PROPERTY(QList<vantle::AppInfo> apps READ apps NOTIFY contentChanged)
public:
    using CountdownState::CountdownState;

    const QList<AppInfo>& apps() const { return m_apps; }
    void setApps(QList<AppInfo> apps) {
        m_apps = std::move(apps);
        emit contentChanged();
    }

    CountdownContent content() const override;

private:
    QList<AppInfo> m_apps;
};

} // namespace vantle
