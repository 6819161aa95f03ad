#pragma once

#include "platform/BundleInfo.h"
#include "platform/Clock.h"
#include "platform/DefaultsStore.h"
#include "platform/Executor.h"
#include "platform/LoginItem.h"

#include <memory>

namespace vantle {

struct ProductTexts;

// Every OS facility the application uses, built once by the composition root for the platform
// it runs on. Services receive only the interfaces they need.
struct Platform {
    std::unique_ptr<Clock> clock;
    std::unique_ptr<Executor> executor;
    std::unique_ptr<DefaultsStore> defaults;
    std::unique_ptr<BundleInfo> bundle;
    std::unique_ptr<LoginItem> loginItem;
    const ProductTexts* texts = nullptr;
};

} // namespace vantle
