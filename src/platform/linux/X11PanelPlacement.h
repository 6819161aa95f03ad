#pragma once

#include "platform/PanelPlacement.h"

namespace vantle {

class X11Connection;

// Asks an EWMH window manager to keep the panel sticky and above, out of the taskbar, without
// minimise and maximise, and not to focus it at map.
class X11PanelPlacement final : public PanelPlacement {
public:
    explicit X11PanelPlacement(X11Connection& connection);
    void prepare(QWindow& window) override;

private:
    X11Connection& m_x;
};

} // namespace vantle
