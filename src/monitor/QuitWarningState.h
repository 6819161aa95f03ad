#pragma once

#include "model/AppInfo.h"

#include <QList>
#include <QObject>

namespace vantle {

// The pending auto-quit batch and its countdown, observed by the countdown panel.
class QuitWarningState final : public QObject {
    Q_OBJECT
    Q_PROPERTY(int secondsLeft READ secondsLeft NOTIFY secondsLeftChanged)
    Q_PROPERTY(QList<vantle::AppInfo> apps READ apps NOTIFY appsChanged)
public:
    using QObject::QObject;

    int secondsLeft() const { return m_secondsLeft; }
    const QList<AppInfo>& apps() const { return m_apps; }

    void setSecondsLeft(int seconds) {
        m_secondsLeft = seconds;
        emit secondsLeftChanged();
    }
    void setApps(QList<AppInfo> apps) {
        m_apps = std::move(apps);
        emit appsChanged();
    }

signals:
    void secondsLeftChanged();
    void appsChanged();

private:
    int m_secondsLeft = 0;
    QList<AppInfo> m_apps;
};

} // namespace vantle
