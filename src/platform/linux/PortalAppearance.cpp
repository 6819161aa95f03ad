#include "platform/linux/PortalAppearance.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace vantle {

namespace {
const QString kPortalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPortalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");

bool paletteIsDark() {
    return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}
} // namespace

PortalAppearance::PortalAppearance(QDBusConnection bus, QObject* parent)
    : DesktopAppearance(parent)
    , m_bus(std::move(bus))
    , m_lastDark(paletteIsDark()) {
    if (qApp) {
        qApp->installEventFilter(this);
    }
    if (!m_bus.isConnected()) {
        return;
    }
    m_bus.connect(kPortalService, kPortalPath, kSettings, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    // Asynchronous: an activatable portal can take a while to start, and start-up must not wait.
    QDBusMessage read = QDBusMessage::createMethodCall(kPortalService, kPortalPath, kSettings,
                                                       QStringLiteral("Read"));
    read << kGroup << kKey;
    auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(read, 5'000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this](QDBusPendingCallWatcher* call) {
                call->deleteLater();
                const QDBusMessage reply = call->reply();
                if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
                    // No portal (or an old one): the palette stands in, silently, as it should.
                    return;
                }
                setPreference(darkFromColorScheme(reply.arguments().constFirst()));
            });
}

bool PortalAppearance::isDark() const {
    return m_preference.value_or(paletteIsDark());
}

std::optional<bool> PortalAppearance::darkFromColorScheme(const QVariant& value) {
    QVariant inner = value;
    for (int depth = 0; depth < 4 && inner.canConvert<QDBusVariant>() &&
                        inner.metaType() == QMetaType::fromType<QDBusVariant>();
         ++depth) {
        inner = inner.value<QDBusVariant>().variant();
    }
    bool ok = false;
    const uint scheme = inner.toUInt(&ok);
    if (!ok) {
        return std::nullopt;
    }
    switch (scheme) {
    case 1:
        return true;
    case 2:
        return false;
    default:
        return std::nullopt;
    }
}

bool PortalAppearance::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange && !m_preference) {
        setPreference(std::nullopt);
    }
    return false;
}

void PortalAppearance::settingChanged(const QString& group, const QString& key,
                                      const QDBusVariant& value) {
    if (group == kGroup && key == kKey) {
        setPreference(darkFromColorScheme(QVariant::fromValue(value)));
    }
}

void PortalAppearance::setPreference(std::optional<bool> dark) {
    m_preference = dark;
    const bool now = isDark();
    if (now != m_lastDark) {
        m_lastDark = now;
        emit isDarkChanged(now);
    }
}

} // namespace vantle
