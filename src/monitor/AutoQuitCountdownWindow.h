#pragma once

#include "monitor/CountdownPresenter.h"

#include <QObject>
#include <QPointer>

namespace vantle {

class AutoQuitCountdownView;
class PanelPlacement;

// The auto-quit countdown as a small always-on-top panel on every workspace that leaves the
// keyboard with the app in front. Closing it with its close button means cancel.
class AutoQuitCountdownWindow final : public QObject, public CountdownPresenter {
    Q_OBJECT
public:
    explicit AutoQuitCountdownWindow(PanelPlacement& placement, QObject* parent = nullptr);
    ~AutoQuitCountdownWindow() override;

    void show(QuitWarningState& state, std::function<void()> onQuitNow,
              std::function<void()> onCancel) override;
    void close() override;
    bool isOpen() const override { return !m_panel.isNull(); }

    // The open panel; null when closed.
    QWidget* panel() const;

protected:
    // Watches the panel for the user closing it.
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    PanelPlacement& m_placement;
    QPointer<AutoQuitCountdownView> m_panel;
    std::function<void()> m_onCancel;
};

} // namespace vantle
