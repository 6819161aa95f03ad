#include "platform/linux/DesktopEntryIndex.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

// GLib names struct members "signals", which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gdesktopappinfo.h>
#pragma pop_macro("signals")

namespace vantle {

namespace {

// Reloading reads every .desktop file, so it is done at most this often.
constexpr qint64 kReloadIntervalMs = 60'000;

QString fromUtf8(const char* text) {
    return text ? QString::fromUtf8(text) : QString();
}

QString stripDesktop(QString id) {
    if (id.endsWith(QLatin1String(".desktop"))) {
        id.chop(8);
    }
    return id;
}

} // namespace

void DesktopEntryIndex::load() {
    m_entries.clear();
    m_byId.clear();
    m_byWmClass.clear();
    m_byExecutable.clear();
    QHash<QString, int> executableUses;

    GList* all = g_app_info_get_all();
    for (GList* node = all; node; node = node->next) {
        auto* info = static_cast<GAppInfo*>(node->data);
        if (!G_IS_DESKTOP_APP_INFO(info)) {
            continue;
        }
        auto* desktop = G_DESKTOP_APP_INFO(info);
        Entry entry;
        entry.id = stripDesktop(fromUtf8(g_app_info_get_id(info)));
        entry.name = fromUtf8(g_app_info_get_name(info));
        if (GIcon* icon = g_app_info_get_icon(info)) {
            gchar* iconText = g_icon_to_string(icon);
            entry.iconName = fromUtf8(iconText);
            g_free(iconText);
        }
        const int index = static_cast<int>(m_entries.size());
        m_byId.insert(entry.id.toLower(), index);
        if (const char* wmClass = g_desktop_app_info_get_startup_wm_class(desktop)) {
            m_byWmClass.insert(QString::fromUtf8(wmClass).toLower(), index);
        }
        if (const char* executable = g_app_info_get_executable(info)) {
            const QString base = QFileInfo(QString::fromUtf8(executable)).fileName();
            m_byExecutable.insert(base, index);
            ++executableUses[base];
        }
        m_entries.push_back(std::move(entry));
    }
    g_list_free_full(all, g_object_unref);

    // An executable shared by several entries (an interpreter, a sandbox launcher) says nothing.
    for (auto it = executableUses.cbegin(); it != executableUses.cend(); ++it) {
        if (it.value() > 1) {
            m_byExecutable.remove(it.key());
        }
    }
    m_loadedAt.start();
}

std::optional<DesktopEntryIndex::Entry> DesktopEntryIndex::match(const Clues& clues) {
    if (!m_loadedAt.isValid()) {
        load();
    }
    if (auto found = lookUp(clues)) {
        return found;
    }
    if (m_loadedAt.elapsed() < kReloadIntervalMs) {
        return std::nullopt;
    }
    load();
    return lookUp(clues);
}

const DesktopEntryIndex::Entry* DesktopEntryIndex::byId(const QString& id) const {
    const auto it = m_byId.constFind(id.toLower());
    return it == m_byId.constEnd() ? nullptr : &m_entries[static_cast<std::size_t>(*it)];
}

std::optional<DesktopEntryIndex::Entry> DesktopEntryIndex::lookUp(const Clues& clues) const {
    if (!clues.applicationId.isEmpty()) {
        if (const Entry* entry = byId(clues.applicationId)) {
            return *entry;
        }
    }
    for (const QString& wm : {clues.wmClass, clues.wmInstance}) {
        if (wm.isEmpty()) {
            continue;
        }
        if (const auto it = m_byWmClass.constFind(wm.toLower()); it != m_byWmClass.constEnd()) {
            return m_entries[static_cast<std::size_t>(*it)];
        }
        if (const Entry* entry = byId(wm)) {
            return *entry;
        }
    }
    if (clues.pid <= 0) {
        return std::nullopt;
    }
    QFile cgroup(QStringLiteral("/proc/%1/cgroup").arg(clues.pid));
    if (cgroup.open(QIODevice::ReadOnly)) {
        for (const QString& candidate : scopeCandidates(QString::fromUtf8(cgroup.readAll()))) {
            if (const Entry* entry = byId(candidate)) {
                return *entry;
            }
        }
    }
    const QString executable =
        QFileInfo(QStringLiteral("/proc/%1/exe").arg(clues.pid)).symLinkTarget();
    if (!executable.isEmpty()) {
        const auto it = m_byExecutable.constFind(QFileInfo(executable).fileName());
        if (it != m_byExecutable.constEnd()) {
            return m_entries[static_cast<std::size_t>(*it)];
        }
    }
    return std::nullopt;
}

QStringList DesktopEntryIndex::scopeCandidates(const QString& cgroupText) {
    // Application units are named app[-<launcher>]-<id>[@<random>].service or
    // app[-<launcher>]-<id>-<random>.scope, with '-' inside the id escaped as \x2d.
    static const QRegularExpression unit(
        QStringLiteral(R"(/app-([^/]+?)(?:-[^-/]+\.scope|@[^/]*\.service|\.service)(?:/|$))"));
    QStringList candidates;
    for (const QString& line : cgroupText.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QRegularExpressionMatch match = unit.match(line);
        if (!match.hasMatch()) {
            continue;
        }
        const QString name = match.captured(1);
        const auto unescape = [](QString text) {
            return text.replace(QLatin1String("\\x2d"), QLatin1String("-"));
        };
        candidates << unescape(name);
        const qsizetype dash = name.indexOf(QLatin1Char('-'));
        if (dash > 0) {
            candidates << unescape(name.mid(dash + 1));
        }
    }
    return candidates;
}

} // namespace vantle
