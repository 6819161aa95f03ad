#pragma once

#include "model/AppRule.h"
#include "ui/settings/SettingsContext.h"

#include <QIcon>
#include <QStringList>
#include <QWidget>
#include <memory>

class QLabel;
class QVBoxLayout;

namespace vantle {

class AutoQuitTabState;

// Per-app rules, the system idle sweep and the warning before an automatic quit.
class AutoQuitTab final : public QWidget {
    Q_OBJECT
public:
    explicit AutoQuitTab(const SettingsContext& context, QWidget* parent = nullptr);
    ~AutoQuitTab() override;

    // Opens the "Add App to Watch" sheet.
    void showAddSheet();

private:
    void showRules();
    QWidget* ruleRow(qsizetype index);
    QIcon ruleIcon(const AppRule& rule) const;
    void showIdleMinutes();

    SettingsContext m_context;
    std::unique_ptr<AutoQuitTabState> m_state;
    QLabel* m_rulesIntro;
    QLabel* m_noRules;
    QVBoxLayout* m_rows;
    // The rule each row shows, so an edit of one rule updates rows in place.
    QStringList m_shownRules;
    QLabel* m_idleMinutes;
};

} // namespace vantle
