#pragma once

#include "platform/ApplicationCatalog.h"
#include "ui/settings/SettingsContext.h"

#include <QWidget>

class QVBoxLayout;

namespace vantle {

class ExclusionsState;

// The apps the system idle sweep never quits: a switch per running app, the excluded apps that
// are not running now, and "Add App" for installed ones.
class ExclusionsTab final : public QWidget {
    Q_OBJECT
public:
    explicit ExclusionsTab(const SettingsContext& context, QWidget* parent = nullptr);

    ExclusionsState& state() const { return *m_state; }

    // Excludes what the chooser returned: applications from the catalog, and desktop-entry files
    // from elsewhere. Picks without an identifier are named in a warning.
    void exclude(const QList<ApplicationCatalog::Application>& apps, const QStringList& files);

private:
    void rebuild();
    void chooseApps();

    SettingsContext m_context;
    ExclusionsState* m_state;
    QWidget* m_lists = nullptr;
    QVBoxLayout* m_layout;
};

} // namespace vantle
