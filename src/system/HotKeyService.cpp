#include "system/HotKeyService.h"

#include "platform/Log.h"

#include <algorithm>

namespace vantle {

namespace {
std::optional<AppCommand> commandForId(quint32 id) {
    if (id < 1 || id > static_cast<quint32>(kGlobalCommandCount)) {
        return std::nullopt;
    }
    return static_cast<AppCommand>(id - 1);
}

void reportUnavailable(AppCommand command) {
    logLine(QStringLiteral("could not claim the %1 shortcut; something else may hold it")
                .arg(QString::fromUtf8(commandBinding(command).title)));
}
} // namespace

HotKeyService::HotKeyService(HotKeyRegistrar& registrar, QObject* parent)
    : QObject(parent)
    , m_registrar(registrar) {
    connect(&m_registrar, &HotKeyRegistrar::pressed, this, &HotKeyService::handle);
    connect(&m_registrar, &HotKeyRegistrar::refused, this, &HotKeyService::onRefused);
    connect(&m_registrar, &HotKeyRegistrar::triggerDescribed, this,
            &HotKeyService::onTriggerDescribed);
}

void HotKeyService::registerHotKeys(const QList<AppCommand>& commands) {
    // Release the whole previous set first, so a combination is never held twice.
    for (const auto& [id, registration] : m_registered) {
        m_registrar.unregisterHotKey(registration.reference);
    }
    m_registered.clear();
    const bool hadTriggers = !m_triggers.isEmpty();
    m_triggers.clear();

    QList<AppCommand> unavailable;
    for (const AppCommand command : commands) {
        if (!isGlobalCommand(command) || m_registered.count(hotKeyId(command)) > 0) {
            continue;
        }
        const CommandBinding& binding = commandBinding(command);
        const HotKeyRegistrar::Request request{hotKeyId(command), rawValue(command), binding.combo,
                                               QString::fromUtf8(binding.title)};
        if (const auto reference = m_registrar.registerHotKey(request)) {
            m_registered.emplace(request.id, Registration{command, *reference});
        } else {
            unavailable.append(command);
            reportUnavailable(command);
        }
    }
    std::sort(unavailable.begin(), unavailable.end());
    m_unavailable = unavailable;
    emit unavailableChanged();
    if (hadTriggers) {
        emit keyCapsChanged();
    }
    // Refusals and triggers the desktop reports from here on amend the state just published.
    m_registrar.commit();
}

void HotKeyService::handle(quint32 id) {
    const auto found = m_registered.find(id);
    if (found == m_registered.end() || !onCommand) {
        return;
    }
    onCommand(found->second.command);
}

QList<AppCommand> HotKeyService::unavailable() const {
    return m_unavailable;
}

bool HotKeyService::isRegistered(AppCommand command) const {
    return m_registered.count(hotKeyId(command)) > 0;
}

QString HotKeyService::keyCap(AppCommand command, KeyCapStyle style) const {
    const QString bound = m_triggers.value(command);
    return bound.isEmpty() ? commandBinding(command).keyCap(style) : bound;
}

void HotKeyService::onRefused(quint32 id) {
    const auto found = m_registered.find(id);
    if (found == m_registered.end()) {
        return;
    }
    const AppCommand command = found->second.command;
    const HotKeyRegistrar::Reference reference = found->second.reference;
    m_registered.erase(found);
    // Not held, so not kept: the next registration asks afresh.
    m_registrar.unregisterHotKey(reference);
    reportUnavailable(command);
    m_unavailable.append(command);
    std::sort(m_unavailable.begin(), m_unavailable.end());
    emit unavailableChanged();
}

void HotKeyService::onTriggerDescribed(quint32 id, const QString& text) {
    const auto command = commandForId(id);
    if (!command || m_registered.count(id) == 0 || m_triggers.value(*command) == text) {
        return;
    }
    m_triggers.insert(*command, text);
    emit keyCapsChanged();
}

} // namespace vantle
