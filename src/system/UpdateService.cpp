#include "system/UpdateService.h"

#include "model/DiagnosticsReport.h"
#include "platform/Clock.h"
#include "platform/Updater.h"

#include <QLocale>

namespace vantle {

UpdateService::UpdateService(Updater* updater, const Clock& clock, QObject* parent)
    : QObject(parent)
    , m_updater(updater)
    , m_clock(clock) {
    if (m_updater) {
        connect(m_updater, &Updater::canCheckForUpdatesChanged, this, &UpdateService::setCanCheck);
        setCanCheck(m_updater->canCheckForUpdates());
    }
}

void UpdateService::startUpdater() {
    if (m_updater) {
        m_updater->startUpdater();
    }
}

bool UpdateService::automaticallyChecksForUpdates() const {
    return m_updater && m_updater->automaticallyChecksForUpdates();
}

void UpdateService::setAutomaticallyChecksForUpdates(bool enabled) {
    if (m_updater) {
        m_updater->setAutomaticallyChecksForUpdates(enabled);
    }
}

void UpdateService::checkForUpdates() {
    if (m_updater && m_canCheck) {
        m_updater->checkForUpdates();
    }
}

QString UpdateService::lastCheckText() const {
    const std::optional<QDateTime> last =
        m_updater ? m_updater->lastUpdateCheckDate() : std::nullopt;
    if (!last || !last->isValid()) {
        return {};
    }
    const QLocale locale;
    const qint64 daysAgo = last->toLocalTime().date().daysTo(m_clock.now().date());
    const QString time = locale.toString(last->toLocalTime().time(), QLocale::ShortFormat);
    if (daysAgo == 0) {
        return tr("Today at %1").arg(time);
    }
    if (daysAgo == 1) {
        return tr("Yesterday at %1").arg(time);
    }
    return mediumDateTime(last->toLocalTime(), locale);
}

void UpdateService::setCanCheck(bool canCheck) {
    if (m_canCheck != canCheck) {
        m_canCheck = canCheck;
        emit canCheckForUpdatesChanged();
    }
}

} // namespace vantle
