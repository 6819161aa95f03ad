#include "platform/linux/X11Connection.h"
#include "platform/linux/X11HotKeyRegistrar.h"
#include "support/VirtualDesktop.h"
#include "system/HotKeyService.h"

#include <QTest>
#include <cstdlib>
#include <memory>
#include <vector>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

using namespace vantle;
using vantle::testing::VirtualDesktop;
using Command = AppCommand;

namespace {

constexpr auto kCtrlAltSuper = uint16_t(XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1 | XCB_MOD_MASK_4);
const QList<Command> kGlobal{Command::quitAllApps, Command::sleep, Command::restart,
                             Command::shutDown};

// A second X client of the test's own, standing in for another program.
struct OtherClient {
    xcb_connection_t* c;
    xcb_window_t root;

    explicit OtherClient(const QString& display)
        : c(xcb_connect(display.toLocal8Bit().constData(), nullptr))
        , root(xcb_setup_roots_iterator(xcb_get_setup(c)).data->root) {}
    ~OtherClient() { xcb_disconnect(c); }

    xcb_keycode_t keycodeOf(xcb_keysym_t keysym) const {
        xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(c);
        xcb_keycode_t* codes = xcb_key_symbols_get_keycode(symbols, keysym);
        const xcb_keycode_t code = codes ? codes[0] : 0;
        std::free(codes);
        xcb_key_symbols_free(symbols);
        return code;
    }

    // The modifier state the server reports right now (locks included).
    uint16_t modifierState() const {
        auto* reply = xcb_query_pointer_reply(c, xcb_query_pointer(c, root), nullptr);
        const uint16_t mask = reply ? reply->mask : 0;
        std::free(reply);
        return mask;
    }

    std::vector<xcb_keysym_t> keysymsOf(xcb_keycode_t code, uint8_t& perKeycode) const {
        auto* reply =
            xcb_get_keyboard_mapping_reply(c, xcb_get_keyboard_mapping(c, code, 1), nullptr);
        perKeycode = reply->keysyms_per_keycode;
        const xcb_keysym_t* syms = xcb_get_keyboard_mapping_keysyms(reply);
        std::vector<xcb_keysym_t> result(syms, syms + perKeycode);
        std::free(reply);
        return result;
    }

    // Whether this client can grab the combination; lets it go again at once.
    bool canGrab(xcb_keycode_t code, uint16_t modifiers) const {
        xcb_generic_error_t* error =
            xcb_request_check(c, xcb_grab_key_checked(c, 1, root, modifiers, code,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        if (error) {
            std::free(error);
            return false;
        }
        xcb_ungrab_key(c, code, root, modifiers);
        xcb_flush(c);
        return true;
    }

    // Presses the keys in order and releases them in reverse, as a user's fingers would.
    void press(const std::vector<xcb_keycode_t>& codes) const {
        for (const xcb_keycode_t code : codes) {
            xcb_test_fake_input(c, XCB_KEY_PRESS, code, XCB_CURRENT_TIME, root, 0, 0, 0);
        }
        for (auto it = codes.rbegin(); it != codes.rend(); ++it) {
            xcb_test_fake_input(c, XCB_KEY_RELEASE, *it, XCB_CURRENT_TIME, root, 0, 0, 0);
        }
        xcb_flush(c);
    }

    void setKeysyms(xcb_keycode_t code, uint8_t perKeycode, const std::vector<xcb_keysym_t>& syms) {
        xcb_change_keyboard_mapping(c, 1, code, perKeycode, syms.data());
        xcb_flush(c);
    }
};

} // namespace

// Real key presses through xdotool on a private X server.
class TestX11HotKeys : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<VirtualDesktop> m_desktop;
    std::unique_ptr<X11Connection> m_x;
    std::unique_ptr<X11HotKeyRegistrar> m_registrar;
    std::unique_ptr<HotKeyService> m_service;
    QList<Command> m_received;

    void press(const QString& keys) {
        auto xdotool = m_desktop->start(QStringLiteral("xdotool"), {QStringLiteral("key"), keys});
        QVERIFY(xdotool->waitForFinished(10'000));
        QCOMPARE(xdotool->exitCode(), 0);
    }

private slots:
    void initTestCase() {
        m_desktop = std::make_unique<VirtualDesktop>();
        if (!m_desktop->isRunning()) {
            QSKIP(qPrintable(m_desktop->error()));
        }
    }

    void init() {
        m_x = X11Connection::open(m_desktop->display());
        QVERIFY(m_x);
        m_registrar = std::make_unique<X11HotKeyRegistrar>(*m_x);
        m_service = std::make_unique<HotKeyService>(*m_registrar);
        m_received.clear();
        m_service->onCommand = [this](Command command) { m_received.append(command); };
    }

    void cleanup() {
        m_service.reset();
        m_registrar.reset();
        m_x.reset();
    }

    void aPressReachesOnCommandWhateverTheLocks_data() {
        QTest::addColumn<QString>("lockKey");
        QTest::addColumn<int>("lockMask");
        QTest::newRow("no lock") << QString() << 0;
        QTest::newRow("NumLock on") << QStringLiteral("Num_Lock") << int(XCB_MOD_MASK_2);
        QTest::newRow("CapsLock on") << QStringLiteral("Caps_Lock") << int(XCB_MOD_MASK_LOCK);
    }
    void aPressReachesOnCommandWhateverTheLocks() {
        QFETCH(QString, lockKey);
        QFETCH(int, lockMask);
        m_service->registerHotKeys(kGlobal);
        QVERIFY(m_service->unavailable().isEmpty());

        OtherClient probe(m_desktop->display());
        if (!lockKey.isEmpty()) {
            press(lockKey);
            QTRY_VERIFY((probe.modifierState() & lockMask) != 0);
        }
        press(QStringLiteral("ctrl+alt+super+s"));
        press(QStringLiteral("ctrl+alt+super+d"));
        press(QStringLiteral("ctrl+alt+s")); // not a shortcut of ours
        QTRY_COMPARE(m_received, (QList<Command>{Command::sleep, Command::shutDown}));
        if (!lockKey.isEmpty()) {
            press(lockKey);
            QTRY_COMPARE(probe.modifierState() & lockMask, 0);
        }
    }

    void aCombinationHeldElsewhereIsUnavailableAndTheOthersWork() {
        OtherClient other(m_desktop->display());
        const xcb_keycode_t q = other.keycodeOf('q');
        QVERIFY(q != 0);
        const uint16_t held = kCtrlAltSuper;
        QVERIFY(!xcb_request_check(other.c,
                                   xcb_grab_key_checked(other.c, 1, other.root, held, q,
                                                        XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));

        m_service->registerHotKeys(kGlobal);
        QCOMPARE(m_service->unavailable(), QList<Command>{Command::quitAllApps});
        press(QStringLiteral("ctrl+alt+super+q"));
        press(QStringLiteral("ctrl+alt+super+r"));
        QTRY_COMPARE(m_received, QList<Command>{Command::restart});

        // Once the other program lets go, the next registration claims it, all lock variants
        // included (a leftover variant grabbed by the failed attempt would make this fail).
        xcb_ungrab_key(other.c, q, other.root, held);
        xcb_flush(other.c);
        QTRY_VERIFY((m_service->registerHotKeys(kGlobal), m_service->unavailable().isEmpty()));
        press(QStringLiteral("ctrl+alt+super+q"));
        QTRY_COMPARE(m_received, (QList<Command>{Command::restart, Command::quitAllApps}));
    }

    void switchedOffShortcutsAreReleased() {
        m_service->registerHotKeys(kGlobal);
        m_service->registerHotKeys({Command::shutDown});
        // Another program can now take what was released.
        OtherClient other(m_desktop->display());
        QVERIFY(other.canGrab(other.keycodeOf('s'), kCtrlAltSuper));
        press(QStringLiteral("ctrl+alt+super+d"));
        QTRY_COMPARE(m_received, QList<Command>{Command::shutDown});
    }

    void aNewKeyboardMapKeepsTheShortcuts() {
        m_service->registerHotKeys({Command::sleep});
        OtherClient other(m_desktop->display());
        const xcb_keycode_t oldCode = other.keycodeOf('s');
        // A key the map leaves empty takes over S, as a layout switch would move it.
        uint8_t per = 0;
        xcb_keycode_t newCode = 0;
        for (xcb_keycode_t code = 250; code > 200 && newCode == 0; --code) {
            const auto syms = other.keysymsOf(code, per);
            if (std::all_of(syms.cbegin(), syms.cend(), [](xcb_keysym_t s) { return s == 0; })) {
                newCode = code;
            }
        }
        QVERIFY(newCode != 0);
        const std::vector<xcb_keysym_t> sSyms = other.keysymsOf(oldCode, per);
        other.setKeysyms(newCode, per, sSyms);
        other.setKeysyms(oldCode, per, std::vector<xcb_keysym_t>(per, 0));
        QTRY_COMPARE(other.keycodeOf('s'), newCode);
        // Ours once another client can no longer take it.
        QTRY_VERIFY(!other.canGrab(newCode, kCtrlAltSuper));

        // xdotool would remap a key of its own for S here; a raw key press is what a user makes.
        other.press(
            {other.keycodeOf(0xffe3), other.keycodeOf(0xffe9), other.keycodeOf(0xffeb), newCode});
        QTRY_COMPARE(m_received, QList<Command>{Command::sleep});
        QVERIFY(other.canGrab(oldCode, kCtrlAltSuper));

        other.setKeysyms(oldCode, per, sSyms);
        other.setKeysyms(newCode, per, std::vector<xcb_keysym_t>(per, 0));
    }
};

QTEST_GUILESS_MAIN(TestX11HotKeys)
#include "tst_x11hotkeys.moc"
