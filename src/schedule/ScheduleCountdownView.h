#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;

namespace vantle {

class ScheduleWarningState;

// The content of the schedule panel: which action is coming, the seconds left, and the two
// choices.
class ScheduleCountdownView final : public QWidget {
    Q_OBJECT
public:
    ScheduleCountdownView(ScheduleWarningState& state, std::function<void()> onProceed,
                          std::function<void()> onCancel, QWidget* parent = nullptr);

private:
    void showAction();
    void showSecondsLeft();

    ScheduleWarningState& m_state;
    std::function<void()> m_onProceed;
    std::function<void()> m_onCancel;
    QLabel* m_symbol = nullptr;
    QLabel* m_title = nullptr;
    QLabel* m_countdown = nullptr;
    QPushButton* m_confirm = nullptr;
};

} // namespace vantle
