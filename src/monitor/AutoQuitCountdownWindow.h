#pragma once

#include "monitor/CountdownPresenter.h"
#include "monitor/FloatingPanelHost.h"

#include <QObject>

namespace vantle {

class PanelPlacement;

// The auto-quit countdown as a small always-on-top panel on every workspace that leaves the
// keyboard with the app in front. Closing it with its close button means cancel.
class AutoQuitCountdownWindow final : public QObject, public CountdownPresenter {
    Q_OBJECT
public:
    explicit AutoQuitCountdownWindow(PanelPlacement& placement, QObject* parent = nullptr);

    void show(QuitWarningState& state, std::function<void()> onQuitNow,
              std::function<void()> onCancel) override;
    void close() override;
    bool isOpen() const override { return m_host.isOpen(); }

    // The open panel; null when closed.
    QWidget* panel() const { return m_host.panel(); }

private:
    FloatingPanelHost m_host;
};

} // namespace vantle
