#include "support/X11Client.h"

#include <cstdlib>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

namespace vantle::testing {

X11Client::X11Client(const QString& display)
    : m_c(xcb_connect(display.toLocal8Bit().constData(), nullptr))
    , m_root(xcb_connection_has_error(m_c)
                 ? 0
                 : xcb_setup_roots_iterator(xcb_get_setup(m_c)).data->root) {}

X11Client::~X11Client() {
    xcb_disconnect(m_c);
}

xcb_keycode_t X11Client::keycodeOf(xcb_keysym_t keysym) const {
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(m_c);
    xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, keysym);
    const xcb_keycode_t code = codes ? codes[0] : 0;
    std::free(codes);
    xcb_key_symbols_free(symbols);
    return code;
}

uint16_t X11Client::modifierState() const {
    auto* reply = xcb_query_pointer_reply(m_c, xcb_query_pointer(m_c, m_root), nullptr);
    const uint16_t mask = reply ? reply->mask : 0;
    std::free(reply);
    return mask;
}

bool X11Client::grab(xcb_keycode_t code, uint16_t modifiers) const {
    xcb_generic_error_t* error =
        xcb_request_check(m_c, xcb_grab_key_checked(m_c, 1, m_root, modifiers, code,
                                                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    std::free(error);
    return error == nullptr;
}

void X11Client::ungrab(xcb_keycode_t code, uint16_t modifiers) const {
    xcb_ungrab_key(m_c, code, m_root, modifiers);
    xcb_flush(m_c);
}

bool X11Client::canGrab(xcb_keycode_t code, uint16_t modifiers) const {
    if (!grab(code, modifiers)) {
        return false;
    }
    ungrab(code, modifiers);
    return true;
}

void X11Client::press(const std::vector<xcb_keycode_t>& codes) const {
    for (const xcb_keycode_t code : codes) {
        xcb_test_fake_input(m_c, XCB_KEY_PRESS, code, XCB_CURRENT_TIME, m_root, 0, 0, 0);
    }
    for (auto it = codes.rbegin(); it != codes.rend(); ++it) {
        xcb_test_fake_input(m_c, XCB_KEY_RELEASE, *it, XCB_CURRENT_TIME, m_root, 0, 0, 0);
    }
    xcb_flush(m_c);
}

std::vector<xcb_keysym_t> X11Client::keysymsOf(xcb_keycode_t code) const {
    auto* reply =
        xcb_get_keyboard_mapping_reply(m_c, xcb_get_keyboard_mapping(m_c, code, 1), nullptr);
    if (!reply) {
        return {};
    }
    const xcb_keysym_t* syms = xcb_get_keyboard_mapping_keysyms(reply);
    std::vector<xcb_keysym_t> result(syms, syms + reply->keysyms_per_keycode);
    std::free(reply);
    return result;
}

void X11Client::setKeysyms(xcb_keycode_t code, const std::vector<xcb_keysym_t>& keysyms) const {
    xcb_change_keyboard_mapping(m_c, 1, code, static_cast<uint8_t>(keysyms.size()), keysyms.data());
    xcb_flush(m_c);
}

} // namespace vantle::testing
