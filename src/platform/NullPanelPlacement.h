#pragma once

#include "platform/PanelPlacement.h"

namespace vantle {

// For platforms that place panels by themselves or not at all (offscreen, Wayland).
class NullPanelPlacement final : public PanelPlacement {
public:
    void prepare(QWindow&) override {}
};

} // namespace vantle
