#pragma once

#include "model/AppCommand.h"

#include <QChar>
#include <QString>
#include <optional>

namespace vantle {

// How key caps are written: macOS with its modifier symbols (⌃⌥⇧⌘), Linux with words
// (Ctrl+Alt+Super+Q). On Linux ⌘ is Super for the system-wide combinations, which must not clash
// with the desktop's own Ctrl shortcuts, and Ctrl inside the app list, as every Linux app does.
enum class KeyCapStyle { macOS, linuxDesktop };

// One fixed key combination.
struct KeyCombo {
    // Option set over the stored raw values.
    enum Modifier : int { command = 1, option = 2, control = 4, shift = 8 };

    static constexpr char16_t kReturn = 13;

    // The key as typed, lower case; Return is the carriage return.
    QChar character;
    // The macOS virtual key code, for the combinations registered system-wide.
    std::optional<quint32> carbonKeyCode;
    int modifiers = 0;

    bool has(Modifier modifier) const { return (modifiers & modifier) != 0; }

    // The key-cap text, for example ⌃⌥⌘Q on macOS or Ctrl+Alt+Super+Q on Linux. `global` tells
    // which Linux key stands for ⌘ (see KeyCapStyle).
    QString displayString(KeyCapStyle style = KeyCapStyle::macOS, bool global = true) const;
    // The Carbon hot-key modifier mask (cmdKey, optionKey, controlKey, shiftKey).
    quint32 hotKeyModifierMask() const;
    // The menu key equivalent's modifier mask (NSEvent.ModifierFlags).
    quint64 menuModifierMask() const;
    // The menu key equivalent's key: the character as a one-character string.
    QString menuKeyEquivalent() const { return QString(character); }

    friend bool operator==(const KeyCombo&, const KeyCombo&) = default;
};

// A command's fixed combination and how it is presented.
struct CommandBinding {
    AppCommand command;
    KeyCombo combo;
    const char* title;  // the menu and Shortcuts tab text
    const char* symbol; // the symbol drawn at the start of its Shortcuts row
    const char* detail; // the grey line under the title

    QString keyCap(KeyCapStyle style) const {
        return combo.displayString(style, isGlobalCommand(command));
    }
};

// Every command's binding; the order is the command order.
const CommandBinding& commandBinding(AppCommand command);

} // namespace vantle
