#pragma once

#include "ui/settings/SettingsContext.h"

#include <QList>
#include <QUuid>
#include <QWidget>
#include <memory>

class QCheckBox;
class QLabel;
class QVBoxLayout;

namespace vantle {

class ScheduleTabState;
struct ShutdownSchedule;

// The weekly power schedules, the Always Allow rule and the warning before a scheduled action.
class ScheduleTab final : public QWidget {
    Q_OBJECT
public:
    explicit ScheduleTab(const SettingsContext& context, QWidget* parent = nullptr);
    ~ScheduleTab() override;

private:
    void showSchedules();
    QWidget* scheduleRow(qsizetype index);
    void showSchedule(QWidget* row, qsizetype index);
    void showAlwaysAllow();
    void switchAlwaysAllow(bool on);

    SettingsContext m_context;
    std::unique_ptr<ScheduleTabState> m_state;
    QLabel* m_noSchedules;
    QVBoxLayout* m_rows;
    // The schedule each row shows, so an edit updates the rows in place.
    QList<QUuid> m_shownIds;
    QCheckBox* m_alwaysAllow;
    QLabel* m_alwaysAllowUnavailable;
    QLabel* m_warningNote;
};

} // namespace vantle
