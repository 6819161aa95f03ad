#pragma once

#include <QWidget>
#include <functional>

class QLabel;

namespace vantle {

class QuitWarningState;

// The content of the auto-quit panel: what will be quit, the seconds left, and the two choices.
class AutoQuitCountdownView final : public QWidget {
    Q_OBJECT
public:
    AutoQuitCountdownView(QuitWarningState& state, std::function<void()> onQuitNow,
                          std::function<void()> onCancel, QWidget* parent = nullptr);

private:
    void showApps();
    void showSecondsLeft();

    QuitWarningState& m_state;
    std::function<void()> m_onQuitNow;
    std::function<void()> m_onCancel;
    QLabel* m_title = nullptr;
    QLabel* m_countdown = nullptr;
    QLabel* m_names = nullptr;
};

} // namespace vantle
