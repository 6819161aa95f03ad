#pragma once

#include "ui/settings/SettingsContext.h"
#include "ui/settings/SettingsTab.h"

#include <QHash>
#include <QWidget>

class QButtonGroup;
class QStackedWidget;

namespace vantle {

class SettingsSelection;
class WheelGuard;

// The settings window: a row of tab buttons over the page of the selected tab. Pages are built
// the first time their tab is shown, each in a scroll area, and kept until the window closes.
class SettingsWindow final : public QWidget {
    Q_OBJECT
public:
    SettingsWindow(const SettingsContext& context, SettingsSelection& selection,
                   QWidget* parent = nullptr);

    // The page of `tab`, or null while that tab has not been shown.
    QWidget* page(SettingsTab tab) const { return m_pages.value(tab); }
    SettingsTab currentTab() const { return m_current; }

    static QString title();

private:
    void showTab(SettingsTab tab);

    SettingsContext m_context;
    SettingsSelection& m_selection;
    QButtonGroup* m_buttons;
    QStackedWidget* m_stack;
    WheelGuard* m_wheelGuard;
    QHash<SettingsTab, QWidget*> m_pages;
    SettingsTab m_current;
};

} // namespace vantle
