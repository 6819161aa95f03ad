#include "model/KeyCombo.h"

#include <QCoreApplication>
#include <QStringList>
#include <array>

namespace vantle {

namespace {

constexpr int kGlobal = KeyCombo::control | KeyCombo::option | KeyCombo::command;

// The letters Q, S, R and D on the standard layout.
const std::array<CommandBinding, 7> kBindings{{
    {AppCommand::quitAllApps,
     {u'q', 12, kGlobal},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Quit All Apps"),
     "xmark.circle",
     QT_TRANSLATE_NOOP("vantle::CommandBinding",
                       "Asks every app to quit. Your exclusions are honoured.")},
    {AppCommand::sleep,
     {u's', 1, kGlobal},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Sleep"),
     "moon.zzz",
     QT_TRANSLATE_NOOP("vantle::CommandBinding",
                       "Starts the same countdown a scheduled sleep does.")},
    {AppCommand::restart,
     {u'r', 15, kGlobal},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Restart"),
     "arrow.clockwise",
     QT_TRANSLATE_NOOP("vantle::CommandBinding",
                       "Quits your apps, then restarts \u2014 after a countdown.")},
    {AppCommand::shutDown,
     {u'd', 2, kGlobal},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Shut Down"),
     "power",
     QT_TRANSLATE_NOOP("vantle::CommandBinding",
                       "Quits your apps, then shuts down \u2014 after a countdown.")},
    {AppCommand::focusSearch,
     {u'f', std::nullopt, KeyCombo::command},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Search Apps"),
     "magnifyingglass",
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Puts the cursor back in the search field.")},
    {AppCommand::selectAll,
     {u'a', std::nullopt, KeyCombo::shift | KeyCombo::command},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Select All or None"),
     "checklist",
     QT_TRANSLATE_NOOP("vantle::CommandBinding",
                       "Ticks every app in the list, or unticks them all.")},
    {AppCommand::quitSelected,
     {QChar(KeyCombo::kReturn), std::nullopt, KeyCombo::command},
     QT_TRANSLATE_NOOP("vantle::CommandBinding", "Quit Selected Apps"),
     "xmark.square",
     QT_TRANSLATE_NOOP("vantle::CommandBinding",
                       "The same as pressing the button at the bottom of the list.")},
}};

} // namespace

QString KeyCombo::displayString(KeyCapStyle style, bool global) const {
    const bool isReturn = character == QChar(kReturn);
    if (style == KeyCapStyle::macOS) {
        QString text;
        if (has(control)) {
            text += u'\u2303';
        }
        if (has(option)) {
            text += u'\u2325';
        }
        if (has(shift)) {
            text += u'\u21E7';
        }
        if (has(command)) {
            text += u'\u2318';
        }
        return text + (isReturn ? QStringLiteral("\u21A9") : QString(character.toUpper()));
    }
    // The same order as the symbols, so both platforms read alike.
    QStringList parts;
    if (has(control)) {
        parts << QStringLiteral("Ctrl");
    }
    if (has(option)) {
        parts << QStringLiteral("Alt");
    }
    if (has(shift)) {
        parts << QStringLiteral("Shift");
    }
    if (has(command)) {
        parts << (global ? QStringLiteral("Super") : QStringLiteral("Ctrl"));
    }
    parts.removeDuplicates();
    parts << (isReturn ? QStringLiteral("Enter") : QString(character.toUpper()));
    return parts.join(u'+');
}

quint32 KeyCombo::hotKeyModifierMask() const {
    return (has(command) ? 0x100U : 0U) | (has(option) ? 0x800U : 0U) |
           (has(control) ? 0x1000U : 0U) | (has(shift) ? 0x200U : 0U);
}

quint64 KeyCombo::menuModifierMask() const {
    return (has(control) ? 0x40000ULL : 0ULL) | (has(option) ? 0x80000ULL : 0ULL) |
           (has(shift) ? 0x20000ULL : 0ULL) | (has(command) ? 0x100000ULL : 0ULL);
}

const CommandBinding& commandBinding(AppCommand command) {
    return kBindings[static_cast<std::size_t>(command)];
}

} // namespace vantle
