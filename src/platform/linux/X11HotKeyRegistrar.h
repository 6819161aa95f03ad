#pragma once

#include "platform/HotKeyRegistrar.h"

#include <map>
#include <vector>
#include <xcb/xcb.h>

struct _XCBKeySymbols;

namespace vantle {

class X11Connection;

// Hot keys as passive key grabs on the root window. Each combination is grabbed with every
// combination of CapsLock and NumLock as well, since X matches the modifier state exactly. Key
// codes are looked up from the keysym in the current keyboard map and grabbed anew whenever the
// map changes, so switching the layout keeps the shortcuts.
class X11HotKeyRegistrar final : public HotKeyRegistrar {
    Q_OBJECT
public:
    explicit X11HotKeyRegistrar(X11Connection& connection, QObject* parent = nullptr);
    ~X11HotKeyRegistrar() override;

    std::optional<Reference> registerHotKey(const Request& request) override;
    void unregisterHotKey(Reference reference) override;

    // The keysym of a combination's key: letters and digits are their own, Return is Return.
    static std::optional<xcb_keysym_t> keysymFor(const KeyCombo& combo);

private:
    struct Grab {
        quint32 id = 0;
        xcb_keysym_t keysym = 0;
        uint16_t modifiers = 0;
        std::vector<xcb_keycode_t> keycodes;
    };

    struct ModifierMasks {
        uint16_t numLock = XCB_MOD_MASK_2;
        uint16_t alt = XCB_MOD_MASK_1;
        uint16_t super = XCB_MOD_MASK_4;
    };

    void onEvent(const xcb_generic_event_t& event);
    void readModifierMap();
    uint16_t maskFor(int modifiers) const;
    std::vector<uint16_t> lockVariants() const;
    // Takes every variant of every key code of `grab`; on any refusal releases what it took.
    bool take(Grab& grab);
    void release(const Grab& grab);
    void grabAgain();

    X11Connection& m_x;
    _XCBKeySymbols* m_symbols;
    ModifierMasks m_masks;
    std::map<Reference, Grab> m_grabs;
    Reference m_nextReference = 1;
};

} // namespace vantle
