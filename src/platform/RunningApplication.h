#pragma once

#include <QIcon>
#include <QString>
#include <memory>
#include <optional>

namespace vantle {

// How an application presents itself: with windows (regular), only in the menu bar or tray
// (accessory), or not at all (prohibited).
enum class ActivationPolicy { regular, accessory, prohibited };

// One running process instance as the operating system sees it. The handle keeps naming the same
// instance after it exits: isTerminated() stays true even if its process id is reused.
class RunningApplication {
public:
    virtual ~RunningApplication() = default;

    virtual qint32 processIdentifier() const = 0;
    // The localised display name; nothing when the application has none.
    virtual std::optional<QString> localizedName() const = 0;
    // The bundle identifier (a desktop-entry id on Linux); nothing when none is known.
    virtual std::optional<QString> bundleIdentifier() const = 0;
    virtual ActivationPolicy activationPolicy() const = 0;
    // May be null.
    virtual QIcon icon() const = 0;
    // True once the process has exited (a zombie counts as exited).
    virtual bool isTerminated() const = 0;

    // Asks the application to quit in the normal way; it may refuse (to ask about unsaved work,
    // say). Returns false when the request could not be delivered at all.
    virtual bool terminate() = 0;
    // Ends the process at once. Returns false when it could not be signalled.
    virtual bool forceTerminate() = 0;
    // Hides (iconifies) every window of the application. Returns false when nothing was hidden.
    virtual bool hide() = 0;
};

using RunningApplicationRef = std::shared_ptr<RunningApplication>;

} // namespace vantle
