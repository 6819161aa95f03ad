#include "monitor/QuitWarningState.h"

#include <QCoreApplication>

namespace vantle {

CountdownContent QuitWarningState::content() const {
    QStringList names;
    for (const AppInfo& app : m_apps) {
        names << app.name;
    }
    return CountdownContent{
        .windowTitle = QCoreApplication::translate("QuitWarningState", "Auto-Quit"),
        .panelSize = QSize(320, 280),
        .symbol = CountdownSymbol::timer,
        .title = m_apps.size() == 1
                     ? QCoreApplication::translate("QuitWarningState", "Quitting Idle App")
                     : QCoreApplication::translate("QuitWarningState", "Quitting Idle Apps"),
        .headingSpacing = 2,
        .caption = {},
        .names = names,
        .confirmLabel = QCoreApplication::translate("QuitWarningState", "Quit Now"),
    };
}

} // namespace vantle
