#pragma once

class QWindow;

namespace vantle {

// Where the window system keeps a floating panel: on every workspace, above ordinary windows,
// and unfocused when it appears, so the app the user is typing in keeps the keyboard.
class PanelPlacement {
public:
    virtual ~PanelPlacement() = default;

    // Call after QWindow::create() and before the first show(); later calls may have no effect.
    // Best effort and silent: where the window system has no such notion, or the window is not
    // one of its own, nothing happens and the panel is simply shown as Qt shows it.
    virtual void prepare(QWindow& window) = 0;
};

} // namespace vantle
