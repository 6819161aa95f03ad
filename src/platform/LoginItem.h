#pragma once

#include <QString>

namespace vantle {

// Starting the application when the user logs in.
class LoginItem {
public:
    virtual ~LoginItem() = default;

    virtual bool isRegistered() const = 0;
    // Both return false and fill `error` (when given) on failure; the item is left as it was.
    virtual bool registerItem(QString* error = nullptr) = 0;
    virtual bool unregisterItem(QString* error = nullptr) = 0;
};

} // namespace vantle
