#pragma once

#include <QElapsedTimer>
#include <QHash>
#include <QString>
#include <optional>
#include <vector>

namespace vantle {

// The installed desktop entries, indexed by the clues a running X client offers, so a window can
// be named after its application and given its desktop-entry id as bundle identifier.
class DesktopEntryIndex {
public:
    struct Entry {
        QString id;   // without ".desktop"
        QString name; // localised
        QString iconName;
    };
    struct Clues {
        QString applicationId; // _GTK_APPLICATION_ID
        QString wmInstance;
        QString wmClass;
        qint32 pid = 0; // for the systemd scope and the executable
    };

    // Tries, in order: the application id, WM_CLASS against StartupWMClass and then against
    // entry ids, the systemd scope the process runs in, and its executable. Entries installed
    // since the last look are picked up when a lookup misses.
    std::optional<Entry> match(const Clues& clues);

    // "app-gnome-org.gnome.Terminal-1234.scope" -> candidates "gnome-org.gnome.Terminal",
    // "org.gnome.Terminal"; nothing for a process outside an application unit.
    static QStringList scopeCandidates(const QString& cgroupLine);

private:
    void load();
    std::optional<Entry> lookUp(const Clues& clues) const;
    const Entry* byId(const QString& id) const;

    std::vector<Entry> m_entries;
    QHash<QString, int> m_byId;         // lower-case id
    QHash<QString, int> m_byWmClass;    // lower-case StartupWMClass
    QHash<QString, int> m_byExecutable; // basename, only when one entry uses it
    QElapsedTimer m_loadedAt;
};

} // namespace vantle
