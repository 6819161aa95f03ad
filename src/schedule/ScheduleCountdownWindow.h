#pragma once

#include "monitor/FloatingPanelHost.h"
#include "schedule/ScheduleCountdownPresenter.h"

#include <QObject>

class QWidget;

namespace vantle {

class PanelPlacement;

// The schedule countdown as a small always-on-top panel on every workspace that leaves the
// keyboard with the app in front. Closing it with its close button skips the action.
class ScheduleCountdownWindow final : public QObject, public ScheduleCountdownPresenter {
    Q_OBJECT
public:
    explicit ScheduleCountdownWindow(PanelPlacement& placement, QObject* parent = nullptr);

    void show(ScheduleWarningState& state, std::function<void()> onProceed,
              std::function<void()> onCancel) override;
    void close() override;
    bool isOpen() const override { return m_host.isOpen(); }

    // The open panel; null when closed.
    QWidget* panel() const { return m_host.panel(); }

private:
    FloatingPanelHost m_host;
};

} // namespace vantle
