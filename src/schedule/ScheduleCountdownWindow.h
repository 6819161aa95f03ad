#pragma once

#include "schedule/ScheduleCountdownPresenter.h"

#include <QObject>
#include <QPointer>

class QWidget;

namespace vantle {

class PanelPlacement;
class ScheduleCountdownView;

// The schedule countdown as a small always-on-top panel on every workspace that leaves the
// keyboard with the app in front. Closing it with its close button skips the action.
class ScheduleCountdownWindow final : public QObject, public ScheduleCountdownPresenter {
    Q_OBJECT
public:
    explicit ScheduleCountdownWindow(PanelPlacement& placement, QObject* parent = nullptr);
    ~ScheduleCountdownWindow() override;

    void show(ScheduleWarningState& state, std::function<void()> onProceed,
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
    QPointer<ScheduleCountdownView> m_panel;
    std::function<void()> m_onCancel;
};

} // namespace vantle
