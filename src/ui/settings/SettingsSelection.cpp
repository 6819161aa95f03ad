#include "ui/settings/SettingsSelection.h"

namespace vantle {

void SettingsSelection::setTab(SettingsTab tab) {
    if (tab == m_tab) {
        return;
    }
    m_tab = tab;
    emit tabChanged(tab);
}

} // namespace vantle
