#pragma once

#include "platform/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusVariant>
#include <QVariant>
#include <optional>

namespace vantle {

// The desktop portal's org.freedesktop.appearance color-scheme (1 dark, 2 light, 0 no
// preference), followed as it changes. Without a portal, or with no preference, the application
// palette's window colour decides.
class PortalAppearance final : public DesktopAppearance {
    Q_OBJECT
public:
    explicit PortalAppearance(QDBusConnection bus, QObject* parent = nullptr);

    bool isDark() const override;

    // What a color-scheme value says: dark, light, or nothing (no preference, unknown value).
    // Accepts the value however deeply the portal wrapped it in variants.
    static std::optional<bool> darkFromColorScheme(const QVariant& value);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void setPreference(std::optional<bool> dark);

    QDBusConnection m_bus;
    std::optional<bool> m_preference;
    bool m_lastDark = false;
};

} // namespace vantle
