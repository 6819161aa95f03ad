#include "model/KeyCombo.h"

#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

class TestKeyCombo : public QObject {
    Q_OBJECT

private slots:
    // The key caps both platforms show, and the masks the macOS calls and menus take.
    void bindings_data() {
        QTest::addColumn<AppCommand>("command");
        QTest::addColumn<QString>("mac");
        QTest::addColumn<QString>("onLinux");
        QTest::addColumn<quint32>("hotKeyMask");
        QTest::addColumn<quint64>("menuMask");
        QTest::addColumn<int>("keyCode");
        const auto row = [](AppCommand c, QString mac, QString onLinux, quint32 hot, quint64 menu,
                            int code) {
            QTest::newRow(qPrintable(rawValue(c))) << c << mac << onLinux << hot << menu << code;
        };
        row(AppCommand::quitAllApps, u"⌃⌥⌘Q"_s, u"Ctrl+Alt+Super+Q"_s, 0x1900, 0x1C0000, 12);
        row(AppCommand::sleep, u"⌃⌥⌘S"_s, u"Ctrl+Alt+Super+S"_s, 0x1900, 0x1C0000, 1);
        row(AppCommand::restart, u"⌃⌥⌘R"_s, u"Ctrl+Alt+Super+R"_s, 0x1900, 0x1C0000, 15);
        row(AppCommand::shutDown, u"⌃⌥⌘D"_s, u"Ctrl+Alt+Super+D"_s, 0x1900, 0x1C0000, 2);
        row(AppCommand::focusSearch, u"⌘F"_s, u"Ctrl+F"_s, 0x100, 0x100000, -1);
        row(AppCommand::selectAll, u"⇧⌘A"_s, u"Shift+Ctrl+A"_s, 0x300, 0x120000, -1);
        row(AppCommand::quitSelected, u"⌘↩"_s, u"Ctrl+Enter"_s, 0x100, 0x100000, -1);
    }
    void bindings() {
        QFETCH(AppCommand, command);
        QFETCH(QString, mac);
        QFETCH(QString, onLinux);
        QFETCH(quint32, hotKeyMask);
        QFETCH(quint64, menuMask);
        QFETCH(int, keyCode);
        const CommandBinding& binding = commandBinding(command);
        QCOMPARE(binding.command, command);
        QCOMPARE(binding.keyCap(KeyCapStyle::macOS), mac);
        QCOMPARE(binding.keyCap(KeyCapStyle::linuxDesktop), onLinux);
        QCOMPARE(binding.combo.hotKeyModifierMask(), hotKeyMask);
        QCOMPARE(binding.combo.menuModifierMask(), menuMask);
        // Only the system-wide commands have a key of their own.
        QCOMPARE(binding.combo.carbonKeyCode,
                 keyCode >= 0 ? std::optional(quint32(keyCode)) : std::nullopt);
        QCOMPARE(isGlobalCommand(command), keyCode >= 0);
    }
};

QTEST_APPLESS_MAIN(TestKeyCombo)
#include "tst_keycombo.moc"
