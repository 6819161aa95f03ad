#pragma once

#include "ui/settings/SettingsContext.h"
#include "ui/settings/ShortcutsTabState.h"

#include <QWidget>
#include <memory>

class QLabel;
class QVBoxLayout;

namespace vantle {

// The fixed shortcuts: the system-wide ones, each with a switch, and those of the app list.
class ShortcutsTab final : public QWidget {
    Q_OBJECT
public:
    explicit ShortcutsTab(const SettingsContext& context, QWidget* parent = nullptr);
    ~ShortcutsTab() override;

private:
    void addSection(QVBoxLayout* layout, ShortcutsTabState::Section section);
    QWidget* shortcutRow(const ShortcutsTabState::Row& row);
    void showRows();

    SettingsContext m_context;
    std::unique_ptr<ShortcutsTabState> m_state;
    QLabel* m_desktopNote = nullptr;
};

} // namespace vantle
