#pragma once

#include "ui/settings/SettingsTab.h"

#include <QObject>

namespace vantle {

// The tab the settings window shows. It belongs to the window manager, so it outlives the
// window: the next window opens where the last one was left.
class SettingsSelection final : public QObject {
    Q_OBJECT
    Q_PROPERTY(vantle::SettingsTab tab READ tab WRITE setTab NOTIFY tabChanged)
public:
    using QObject::QObject;

    SettingsTab tab() const { return m_tab; }
    void setTab(SettingsTab tab);

signals:
    void tabChanged(vantle::SettingsTab tab);

private:
    SettingsTab m_tab = SettingsTab::general;
};

} // namespace vantle
