#include "platform/linux/X11Connection.h"
#include "platform/linux/X11HotKeyRegistrar.h"
#include "support/VirtualDesktop.h"
#include "support/X11Client.h"
#include "system/HotKeyService.h"

#include <QTest>
#include <memory>

using namespace vantle;
using vantle::testing::kCtrlAltSuper;
using vantle::testing::VirtualDesktop;
using vantle::testing::X11Client;
using Command = AppCommand;
using namespace Qt::StringLiterals;

namespace {

const QList<Command> kGlobal{Command::quitAllApps, Command::sleep, Command::restart,
                             Command::shutDown};

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
        auto xdotool = m_desktop->start(u"xdotool"_s, {u"key"_s, keys});
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
        QTest::newRow("NumLock on") << u"Num_Lock"_s << int(XCB_MOD_MASK_2);
        QTest::newRow("CapsLock on") << u"Caps_Lock"_s << int(XCB_MOD_MASK_LOCK);
    }
    void aPressReachesOnCommandWhateverTheLocks() {
        QFETCH(QString, lockKey);
        QFETCH(int, lockMask);
        m_service->registerHotKeys(kGlobal);
        QVERIFY(m_service->unavailable().isEmpty());

        X11Client probe(m_desktop->display());
        if (!lockKey.isEmpty()) {
            press(lockKey);
            QTRY_VERIFY((probe.modifierState() & lockMask) != 0);
        }
        press(u"ctrl+alt+super+s"_s);
        press(u"ctrl+alt+super+d"_s);
        press(u"ctrl+alt+s"_s); // not a shortcut of ours
        QTRY_COMPARE(m_received, (QList<Command>{Command::sleep, Command::shutDown}));
        if (!lockKey.isEmpty()) {
            press(lockKey);
            QTRY_COMPARE(probe.modifierState() & lockMask, 0);
        }
    }

    void aCombinationHeldElsewhereIsUnavailableAndTheOthersWork() {
        X11Client other(m_desktop->display());
        const xcb_keycode_t q = other.keycodeOf('q');
        QVERIFY(q != 0);
        QVERIFY(other.grab(q, kCtrlAltSuper));

        m_service->registerHotKeys(kGlobal);
        QCOMPARE(m_service->unavailable(), QList<Command>{Command::quitAllApps});
        // The lock variants taken before the clash showed were let go again.
        for (const uint16_t lock : {uint16_t(XCB_MOD_MASK_LOCK), uint16_t(XCB_MOD_MASK_2)}) {
            QVERIFY(other.canGrab(q, kCtrlAltSuper | lock));
        }
        press(u"ctrl+alt+super+q"_s);
        press(u"ctrl+alt+super+r"_s);
        QTRY_COMPARE(m_received, QList<Command>{Command::restart});

        // Once the other program lets go, the next registration claims it.
        other.ungrab(q, kCtrlAltSuper);
        QTRY_VERIFY((m_service->registerHotKeys(kGlobal), m_service->unavailable().isEmpty()));
        press(u"ctrl+alt+super+q"_s);
        QTRY_COMPARE(m_received, (QList<Command>{Command::restart, Command::quitAllApps}));

        // Switched off, a shortcut is released for another program to take.
        m_service->registerHotKeys({Command::shutDown});
        QVERIFY(other.canGrab(other.keycodeOf('s'), kCtrlAltSuper));
        press(u"ctrl+alt+super+d"_s);
        QTRY_COMPARE(m_received.last(), Command::shutDown);
    }

    void aNewKeyboardMapKeepsTheShortcuts() {
        m_service->registerHotKeys({Command::sleep});
        X11Client other(m_desktop->display());
        const xcb_keycode_t oldCode = other.keycodeOf('s');
        const std::vector<xcb_keysym_t> sSyms = other.keysymsOf(oldCode);
        const std::vector<xcb_keysym_t> none(sSyms.size(), 0);
        // A key the map leaves empty takes over S, as a layout switch would move it.
        xcb_keycode_t newCode = 250;
        while (newCode > 200 && other.keysymsOf(newCode) != none) {
            --newCode;
        }
        QVERIFY(newCode > 200);
        other.setKeysyms(newCode, sSyms);
        other.setKeysyms(oldCode, none);
        QTRY_COMPARE(other.keycodeOf('s'), newCode);
        // Ours once another client can no longer take it.
        QTRY_VERIFY(!other.canGrab(newCode, kCtrlAltSuper));

        // xdotool would remap a key of its own for S here; a raw key press is what a user makes.
        other.press(
            {other.keycodeOf(0xffe3), other.keycodeOf(0xffe9), other.keycodeOf(0xffeb), newCode});
        QTRY_COMPARE(m_received, QList<Command>{Command::sleep});
        QVERIFY(other.canGrab(oldCode, kCtrlAltSuper));

        other.setKeysyms(oldCode, sSyms);
        other.setKeysyms(newCode, none);
    }
};

QTEST_GUILESS_MAIN(TestX11HotKeys)
#include "tst_x11hotkeys.moc"
