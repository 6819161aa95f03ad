#pragma once

#include "system/CountdownPresenter.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace vantle {

class PanelPlacement;

// A warning's countdown as a small fixed-size panel: centred, above other windows, on every
// workspace, leaving the keyboard with the app in front. At most one is open; closing it with its
// close button answers cancel, closing it from here answers nothing.
class CountdownWindow final : public QObject, public CountdownPresenter {
    Q_OBJECT
public:
    explicit CountdownWindow(PanelPlacement& placement, QObject* parent = nullptr);
    ~CountdownWindow() override;

    void show(CountdownState& state, std::function<void(bool confirmed)> onAnswer) override;
    void close() override;
    bool isOpen() const override { return !m_panel.isNull(); }

    // The open panel; null when closed.
    QWidget* panel() const { return m_panel; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    PanelPlacement& m_placement;
    QPointer<QWidget> m_panel;
    std::function<void(bool confirmed)> m_onAnswer;
};

} // namespace vantle
