#include "monitor/QuitWarningState.h"

namespace vantle {

CountdownContent QuitWarningState::content() const {
    QStringList names;
    for (const AppInfo& app : m_apps) {
        names << app.name;
    }
    return CountdownContent{
        .windowTitle = QStringLiteral("Auto-Quit"),
        .panelSize = QSize(320, 280),
        .symbol = CountdownSymbol::timer,
        .title = m_apps.size() == 1 ? QStringLiteral("Quitting Idle App")
                                    : QStringLiteral("Quitting Idle Apps"),
        .headingSpacing = 2,
        .caption = {},
        .names = names,
        .confirmLabel = QStringLiteral("Quit Now"),
    };
}

} // namespace vantle
