#include "model/ProductTexts.h"

namespace vantle {

const ProductTexts& ProductTexts::macOS() {
    static const ProductTexts texts{
        .systemName = QStringLiteral("macOS"),
        .powerSchedulerName = QStringLiteral("pmset"),
    };
    return texts;
}

const ProductTexts& ProductTexts::linuxDesktop() {
    static const ProductTexts texts{
        .systemName = QStringLiteral("Linux"),
        .powerSchedulerName = QStringLiteral("vantle-power"),
    };
    return texts;
}

} // namespace vantle
