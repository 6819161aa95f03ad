#pragma once

#include "platform/HotKeyRegistrar.h"

#include <QSet>
#include <map>

namespace vantle {

// Grants every combination except the ids in `held` (taken by "another program").
struct FakeHotKeyRegistrar final : HotKeyRegistrar {
    QSet<quint32> held;
    // Live registrations by reference.
    std::map<Reference, Request> active;
    int commits = 0;
    Reference nextReference = 100;
    // How the desktop behaves: it picks the keys (a portal), or offers none at all.
    bool desktopBinds = false;
    bool offers = true;

    std::optional<Reference> registerHotKey(const Request& request) override {
        if (held.contains(request.id)) {
            return std::nullopt;
        }
        active.emplace(nextReference, request);
        return nextReference++;
    }
    void unregisterHotKey(Reference reference) override { active.erase(reference); }
    void commit() override { ++commits; }
    bool desktopBindsKeys() const override { return desktopBinds; }
    bool offersHotKeys() const override { return offers; }

    QList<quint32> activeIds() const {
        QList<quint32> ids;
        for (const auto& [reference, request] : active) {
            ids.append(request.id);
        }
        return ids;
    }
};

} // namespace vantle
