#include "schedule/ScheduleWarningState.h"

#include "model/RawEnum.h"

#include <QCoreApplication>

namespace vantle {

using Action = ShutdownSchedule::Action;

QString ScheduleWarningState::title(Action action) {
    switch (action) {
    case Action::sleep:
        return QCoreApplication::translate("ScheduleWarningState", "Going to Sleep");
    case Action::shutdown:
        return QCoreApplication::translate("ScheduleWarningState", "Shutting Down");
    case Action::restart:
        return QCoreApplication::translate("ScheduleWarningState", "Restarting");
    case Action::wake:
    case Action::poweron:
        break;
    }
    return QCoreApplication::translate("ScheduleWarningState", "Waking");
}

CountdownContent ScheduleWarningState::content() const {
    CountdownContent content{
        .windowTitle = rawValue(m_action),
        .panelSize = QSize(320, 260),
        .symbol = CountdownSymbol::sunrise,
        .title = title(m_action),
        .headingSpacing = 10,
        .caption = QCoreApplication::translate(
            "ScheduleWarningState", "Cancel skips this one. The schedule itself is unchanged."),
        .names = {},
        .confirmLabel = QCoreApplication::translate("ScheduleWarningState", "Continue"),
    };
    switch (m_action) {
    case Action::sleep:
        content.symbol = CountdownSymbol::sleep;
        content.confirmLabel = QCoreApplication::translate("ScheduleWarningState", "Sleep Now");
        break;
    case Action::shutdown:
        content.symbol = CountdownSymbol::power;
        content.confirmLabel = QCoreApplication::translate("ScheduleWarningState", "Shut Down Now");
        break;
    case Action::restart:
        content.symbol = CountdownSymbol::restart;
        content.confirmLabel = QCoreApplication::translate("ScheduleWarningState", "Restart Now");
        break;
    case Action::wake:
    case Action::poweron:
        break;
    }
    return content;
}

} // namespace vantle
