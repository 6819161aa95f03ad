#pragma once

#include "platform/Platform.h"

#include <memory>

namespace vantle {

class InstanceGuard;

enum class PlatformUse {
    Application, // the running app: settings are saved as they change
    Inspection,  // a command-line look at the settings: nothing on disk is changed
    AppListing,  // a command-line look at the running apps
};

// The composition root's only knowledge of concrete platform types.
std::unique_ptr<Platform> makePlatform(PlatformUse use);
std::unique_ptr<InstanceGuard> makeInstanceGuard();

} // namespace vantle
