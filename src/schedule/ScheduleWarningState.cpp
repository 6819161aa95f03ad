#include "schedule/ScheduleWarningState.h"

#include "model/RawEnum.h"

namespace vantle {

using Action = ShutdownSchedule::Action;

QString ScheduleWarningState::title(Action action) {
    switch (action) {
    case Action::sleep:
        return QStringLiteral("Going to Sleep");
    case Action::shutdown:
        return QStringLiteral("Shutting Down");
    case Action::restart:
        return QStringLiteral("Restarting");
    case Action::wake:
    case Action::poweron:
        break;
    }
    return QStringLiteral("Waking");
}

CountdownContent ScheduleWarningState::content() const {
    CountdownContent content{
        .windowTitle = rawValue(m_action),
        .panelSize = QSize(320, 260),
        .symbol = CountdownSymbol::sunrise,
        .title = title(m_action),
        .headingSpacing = 10,
        .caption = QStringLiteral("Cancel skips this one. The schedule itself is unchanged."),
        .names = {},
        .confirmLabel = QStringLiteral("Continue"),
    };
    switch (m_action) {
    case Action::sleep:
        content.symbol = CountdownSymbol::sleep;
        content.confirmLabel = QStringLiteral("Sleep Now");
        break;
    case Action::shutdown:
        content.symbol = CountdownSymbol::power;
        content.confirmLabel = QStringLiteral("Shut Down Now");
        break;
    case Action::restart:
        content.symbol = CountdownSymbol::restart;
        content.confirmLabel = QStringLiteral("Restart Now");
        break;
    case Action::wake:
    case Action::poweron:
        break;
    }
    return content;
}

} // namespace vantle
