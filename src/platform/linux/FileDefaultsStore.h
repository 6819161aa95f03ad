#pragma once

#include "platform/DefaultsStore.h"

#include <QJsonObject>

namespace vantle {

// Settings as one JSON file per defaults domain, <directory>/<domain>.json. Values keep their type
// (data is stored as {"utf8": text} or {"base64": ...}); keys it does not understand are kept.
// A save re-reads the file under a lock and changes only its own key, then replaces the file
// atomically, so two running copies never corrupt it or drop each other's keys. A file that
// cannot be parsed is moved aside once, with a log line, and the domain starts from defaults.
class FileDefaultsStore final : public DefaultsStore {
public:
    enum class Mode {
        ReadWrite,
        // For inspection (vantle --diagnostics): writes stay in memory, nothing on disk changes.
        ReadOnly,
    };

    FileDefaultsStore(QString directory, QString domain, Mode mode = Mode::ReadWrite);

    // $XDG_CONFIG_HOME/vantle
    static QString defaultDirectory();

    QString filePath() const;

    std::optional<DefaultsValue> object(const QString& key) const override;
    void setObject(const QString& key, const DefaultsValue& value) override;
    void removeObject(const QString& key) override;
    std::optional<DefaultsDomain> persistentDomain(const QString& name) const override;

    static QJsonValue encode(const DefaultsValue& value);
    static DefaultsValue decode(const QJsonValue& json);

private:
    enum class ReadResult { Ok, Missing, Corrupt, Unreadable };
    static ReadResult readFile(const QString& path, QJsonObject* object, QString* error);

    void load();
    void save(const QString& key, const std::optional<DefaultsValue>& value);
    void keepAside(const QString& reason);
    void reportSaveFailure(const QString& key, const QString& reason);

    QString m_directory;
    QString m_domain;
    Mode m_mode;
    QJsonObject m_values;
    bool m_saveFailureReported = false;
};

} // namespace vantle
