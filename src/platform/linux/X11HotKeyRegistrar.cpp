#include "platform/linux/X11HotKeyRegistrar.h"

#include "platform/Log.h"
#include "platform/linux/X11Connection.h"

#include <QPointer>
#include <cstdlib>
#include <memory>
#include <xcb/xcb_keysyms.h>

namespace vantle {

namespace {

constexpr xcb_keysym_t kReturn = 0xff0d;
constexpr xcb_keysym_t kNumLock = 0xff7f;
constexpr xcb_keysym_t kAltL = 0xffe9;
constexpr xcb_keysym_t kAltR = 0xffea;
constexpr xcb_keysym_t kSuperL = 0xffeb;
constexpr xcb_keysym_t kSuperR = 0xffec;

// The modifiers a combination is made of; the lock modifiers and mouse buttons are not.
constexpr uint16_t kComboMask = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 |
                                XCB_MOD_MASK_2 | XCB_MOD_MASK_3 | XCB_MOD_MASK_4 | XCB_MOD_MASK_5;

template <typename T>
using XcbReply = std::unique_ptr<T, decltype(&std::free)>;

} // namespace

X11HotKeyRegistrar::X11HotKeyRegistrar(X11Connection& connection, QObject* parent)
    : HotKeyRegistrar(parent)
    , m_x(connection)
    , m_symbols(xcb_key_symbols_alloc(connection.connection())) {
    readModifierMap();
    // Key events of a passive grab and MappingNotify reach every client without an event mask.
    m_x.addListener([self = QPointer<X11HotKeyRegistrar>(this)](const xcb_generic_event_t& event) {
        if (self) {
            self->onEvent(event);
        }
    });
}

X11HotKeyRegistrar::~X11HotKeyRegistrar() {
    for (const auto& [reference, grab] : m_grabs) {
        release(grab);
    }
    m_x.flush();
    xcb_key_symbols_free(m_symbols);
}

std::optional<xcb_keysym_t> X11HotKeyRegistrar::keysymFor(const KeyCombo& combo) {
    const char16_t key = combo.character.unicode();
    if (key == KeyCombo::kReturn) {
        return kReturn;
    }
    if ((key >= u'a' && key <= u'z') || (key >= u'0' && key <= u'9')) {
        return static_cast<xcb_keysym_t>(key); // Latin-1 keysyms are their code points
    }
    return std::nullopt;
}

std::optional<HotKeyRegistrar::Reference>
X11HotKeyRegistrar::registerHotKey(const Request& request) {
    const auto keysym = keysymFor(request.combo);
    if (!keysym) {
        logLine(QStringLiteral("no X key for the shortcut %1").arg(request.name));
        return std::nullopt;
    }
    Grab grab{request.id, *keysym, maskFor(request.combo.modifiers), {}};
    if (!take(grab)) {
        return std::nullopt;
    }
    const Reference reference = m_nextReference++;
    m_grabs.emplace(reference, std::move(grab));
    return reference;
}

void X11HotKeyRegistrar::unregisterHotKey(Reference reference) {
    const auto found = m_grabs.find(reference);
    if (found == m_grabs.end()) {
        return;
    }
    release(found->second);
    m_grabs.erase(found);
    m_x.flush();
}

void X11HotKeyRegistrar::readModifierMap() {
    xcb_connection_t* c = m_x.connection();
    XcbReply<xcb_get_modifier_mapping_reply_t> reply(
        xcb_get_modifier_mapping_reply(c, xcb_get_modifier_mapping(c), nullptr), &std::free);
    if (!reply) {
        return;
    }
    ModifierMasks masks{0, 0, 0};
    const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(reply.get());
    const int perModifier = reply->keycodes_per_modifier;
    for (int modifier = 0; modifier < 8; ++modifier) {
        for (int i = 0; i < perModifier; ++i) {
            const xcb_keycode_t code = codes[modifier * perModifier + i];
            if (code == 0) {
                continue;
            }
            const xcb_keysym_t sym = xcb_key_symbols_get_keysym(m_symbols, code, 0);
            const auto bit = static_cast<uint16_t>(1U << modifier);
            if (sym == kNumLock) {
                masks.numLock |= bit;
            } else if (sym == kAltL || sym == kAltR) {
                masks.alt |= bit;
            } else if (sym == kSuperL || sym == kSuperR) {
                masks.super |= bit;
            }
        }
    }
    // A map without one of them keeps the usual assignment.
    const ModifierMasks usual;
    m_masks = {masks.numLock ? masks.numLock : usual.numLock, masks.alt ? masks.alt : usual.alt,
               masks.super ? masks.super : usual.super};
}

uint16_t X11HotKeyRegistrar::maskFor(int modifiers) const {
    const KeyCombo combo{{}, std::nullopt, modifiers};
    return static_cast<uint16_t>((combo.has(KeyCombo::control) ? XCB_MOD_MASK_CONTROL : 0) |
                                 (combo.has(KeyCombo::option) ? m_masks.alt : 0) |
                                 (combo.has(KeyCombo::shift) ? XCB_MOD_MASK_SHIFT : 0) |
                                 (combo.has(KeyCombo::command) ? m_masks.super : 0));
}

std::vector<uint16_t> X11HotKeyRegistrar::lockVariants() const {
    const auto numLock = m_masks.numLock;
    return {0, XCB_MOD_MASK_LOCK, numLock, static_cast<uint16_t>(XCB_MOD_MASK_LOCK | numLock)};
}

bool X11HotKeyRegistrar::take(Grab& grab) {
    xcb_connection_t* c = m_x.connection();
    grab.keycodes.clear();
    const std::unique_ptr<xcb_keycode_t, decltype(&std::free)> codes(
        xcb_key_symbols_get_keycode(m_symbols, grab.keysym), &std::free);
    for (const xcb_keycode_t* code = codes.get(); code && *code != XCB_NO_SYMBOL; ++code) {
        grab.keycodes.push_back(*code);
    }
    if (grab.keycodes.empty()) {
        return false; // this keyboard map has no such key
    }
    struct Attempt {
        xcb_keycode_t code;
        uint16_t modifiers;
        xcb_void_cookie_t cookie;
    };
    std::vector<Attempt> attempts;
    for (const xcb_keycode_t code : grab.keycodes) {
        for (const uint16_t variant : lockVariants()) {
            const auto modifiers = static_cast<uint16_t>(grab.modifiers | variant);
            attempts.push_back({code, modifiers,
                                xcb_grab_key_checked(c, 1, m_x.root(), modifiers, code,
                                                     XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)});
        }
    }
    // Another client's grab of any variant (BadAccess) means the combination is not ours.
    bool refused = false;
    std::vector<const Attempt*> taken;
    for (const Attempt& attempt : attempts) {
        if (xcb_generic_error_t* error = xcb_request_check(c, attempt.cookie)) {
            refused = true;
            std::free(error);
        } else {
            taken.push_back(&attempt);
        }
    }
    if (refused) {
        for (const Attempt* attempt : taken) {
            xcb_ungrab_key(c, attempt->code, m_x.root(), attempt->modifiers);
        }
        m_x.flush();
        grab.keycodes.clear();
    }
    return !refused;
}

void X11HotKeyRegistrar::release(const Grab& grab) {
    for (const xcb_keycode_t code : grab.keycodes) {
        for (const uint16_t variant : lockVariants()) {
            xcb_ungrab_key(m_x.connection(), code, m_x.root(),
                           static_cast<uint16_t>(grab.modifiers | variant));
        }
    }
}

void X11HotKeyRegistrar::grabAgain() {
    for (const auto& [reference, grab] : m_grabs) {
        release(grab);
    }
    readModifierMap();
    QList<quint32> lost;
    for (auto it = m_grabs.begin(); it != m_grabs.end();) {
        if (take(it->second)) {
            ++it;
        } else {
            lost.append(it->second.id);
            it = m_grabs.erase(it);
        }
    }
    m_x.flush();
    for (const quint32 id : lost) {
        logLine(QStringLiteral("lost a shortcut when the keyboard layout changed (id %1)").arg(id));
        emit refused(id);
    }
}

void X11HotKeyRegistrar::onEvent(const xcb_generic_event_t& event) {
    const auto type = event.response_type & 0x7f;
    if (type == XCB_MAPPING_NOTIFY) {
        auto mapping = reinterpret_cast<const xcb_mapping_notify_event_t&>(event);
        xcb_refresh_keyboard_mapping(m_symbols, &mapping);
        if (mapping.request != XCB_MAPPING_POINTER && !m_grabs.empty()) {
            grabAgain();
        }
        return;
    }
    if (type != XCB_KEY_PRESS) {
        return;
    }
    const auto& press = reinterpret_cast<const xcb_key_press_event_t&>(event);
    const auto state = static_cast<uint16_t>(press.state & kComboMask & ~m_masks.numLock);
    for (const auto& [reference, grab] : m_grabs) {
        if (grab.modifiers == state && std::find(grab.keycodes.cbegin(), grab.keycodes.cend(),
                                                 press.detail) != grab.keycodes.cend()) {
            // Delivered from the event loop, never from inside the connection's dispatch.
            QMetaObject::invokeMethod(
                this, [this, id = grab.id] { emit pressed(id); }, Qt::QueuedConnection);
            return;
        }
    }
}

} // namespace vantle
