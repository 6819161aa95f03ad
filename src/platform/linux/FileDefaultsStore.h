#pragma once

#include "platform/Clock.h"
#include "platform/DefaultsStore.h"

#include <QJsonObject>
#include <QMap>

namespace vantle {

// Settings as one JSON file per defaults domain, <directory>/<domain>.json. Values keep their type
// (data is stored as {"utf8": text} or {"base64": ...}); keys it does not understand are kept.
// A save re-reads the file under a lock and changes only its own keys, then replaces the file
// atomically, so two running copies never corrupt it or drop each other's keys. A file that
// cannot be parsed is moved aside once, with a log line, and the domain starts from defaults.
// Saving never waits: when the lock is busy (or the folder cannot be written) the changes stay
// queued, later changes join them, and the clock retries until they land or flush() is called.
class FileDefaultsStore final : public DefaultsStore {
public:
    enum class Mode {
        ReadWrite,
        // For inspection (vantle --diagnostics): writes stay in memory, nothing on disk changes.
        ReadOnly,
    };

    FileDefaultsStore(QString directory, QString domain, Clock& clock, Mode mode = Mode::ReadWrite);
    // Flushes what is still queued.
    ~FileDefaultsStore() override;

    // $XDG_CONFIG_HOME/vantle
    static QString defaultDirectory();

    QString filePath() const;

    std::optional<DefaultsValue> object(const QString& key) const override;
    void setObject(const QString& key, const DefaultsValue& value) override;
    void removeObject(const QString& key) override;
    std::optional<DefaultsDomain> persistentDomain(const QString& name) const override;
    void flush() override;

    // Changes made this session that are not on disk yet.
    bool hasPendingChanges() const { return !m_pending.isEmpty(); }
    QString lockPath() const;

    static QJsonValue encode(const DefaultsValue& value);
    static DefaultsValue decode(const QJsonValue& json);

private:
    enum class ReadResult { Ok, Missing, Corrupt, Unreadable };
    enum class SaveResult { Saved, Busy, Failed };
    static ReadResult readFile(const QString& path, QJsonObject* object, QString* error);

    void load();
    void removeLeftoverTempFiles();
    void change(const QString& key, const std::optional<QJsonValue>& value);
    void save();
    SaveResult writePending();
    void retryLater(SaveResult result);
    void keepAside(const QString& reason);
    void reportSaveFailure(const QString& reason);

    QString m_directory;
    QString m_domain;
    Clock& m_clock;
    Mode m_mode;
    QJsonObject m_values;
    // Key -> value still to write (nothing: remove the key), coalesced by key.
    QMap<QString, std::optional<QJsonValue>> m_pending;
    Timer m_retry;
    Milliseconds m_retryDelay{0};
    std::optional<Milliseconds> m_busySince;
    bool m_busyReported = false;
    bool m_saveFailureReported = false;
};

} // namespace vantle
