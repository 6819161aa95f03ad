#pragma once

#include <QString>
#include <vector>
#include <xcb/xcb.h>

namespace vantle::testing {

constexpr auto kCtrlAltSuper =
    static_cast<uint16_t>(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4);

// A plain X client of the test's own: another program's grabs, a user's fingers, a layout switch.
class X11Client {
public:
    explicit X11Client(const QString& display);
    ~X11Client();
    X11Client(const X11Client&) = delete;
    X11Client& operator=(const X11Client&) = delete;

    // The first key code that types `keysym` in the current map; 0 when none does.
    xcb_keycode_t keycodeOf(xcb_keysym_t keysym) const;
    // The modifier state the server reports right now, locks included.
    uint16_t modifierState() const;

    // Grabs the combination on the root window; false when another client holds it.
    bool grab(xcb_keycode_t code, uint16_t modifiers) const;
    void ungrab(xcb_keycode_t code, uint16_t modifiers) const;
    // Whether the combination is free: grabs it and lets it go at once.
    bool canGrab(xcb_keycode_t code, uint16_t modifiers) const;

    // Presses the keys in order and releases them in reverse, as fingers would (XTEST).
    void press(const std::vector<xcb_keycode_t>& codes) const;

    std::vector<xcb_keysym_t> keysymsOf(xcb_keycode_t code) const;
    void setKeysyms(xcb_keycode_t code, const std::vector<xcb_keysym_t>& keysyms) const;

private:
    xcb_connection_t* m_c;
    xcb_window_t m_root;
};

} // namespace vantle::testing
