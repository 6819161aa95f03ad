#pragma once

#include <QObject>
#include <QPointer>
#include <QSize>
#include <QWidget>
#include <functional>


namespace vantle {

class PanelPlacement;

// Keeps at most one countdown panel open and tells the user's close (a cancel) from a close by
// the program (not one). Both countdown windows present their views through it.
class FloatingPanelHost final : public QObject {
    Q_OBJECT
public:
    explicit FloatingPanelHost(PanelPlacement& placement, QObject* parent = nullptr);
    ~FloatingPanelHost() override;

    // Takes `panel` (a new top-level widget), shows it as a floating panel and calls `onCancel`
    // once if the user closes it. The caller checks isOpen() first.
    void show(QWidget* panel, const QString& title, QSize size, std::function<void()> onCancel);
    // Closes the panel without counting as a cancel; nothing when none is open.
    void close();
    bool isOpen() const { return !m_panel.isNull(); }
    QWidget* panel() const { return m_panel; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    PanelPlacement& m_placement;
    QPointer<QWidget> m_panel;
    std::function<void()> m_onCancel;
};

} // namespace vantle
