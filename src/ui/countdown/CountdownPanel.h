#pragma once

#include <QWidget>
#include <functional>

class QLabel;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace vantle {

class CountdownState;

// What a countdown panel shows: the symbol, the title, the seconds left, a note or the names of
// what is about to go, and the two choices. It follows its state as long as it lives.
class CountdownPanel final : public QWidget {
    Q_OBJECT
public:
    // `onAnswer` gets true for the confirm button (or Return), false for Cancel (or Escape).
    CountdownPanel(CountdownState& state, std::function<void(bool confirmed)> onAnswer,
                   QWidget* parent = nullptr);

private:
    void showContent();
    void showSecondsLeft();

    CountdownState& m_state;
    std::function<void(bool confirmed)> m_onAnswer;
    QLabel* m_symbol = nullptr;
    QVBoxLayout* m_heading = nullptr;
    QLabel* m_title = nullptr;
    QLabel* m_countdown = nullptr;
    QLabel* m_caption = nullptr;
    QLabel* m_names = nullptr;
    QScrollArea* m_namesArea = nullptr;
    QPushButton* m_confirm = nullptr;
};

} // namespace vantle
