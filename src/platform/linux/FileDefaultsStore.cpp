#include "platform/linux/FileDefaultsStore.h"

#include "platform/Log.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringDecoder>

namespace vantle {

namespace {

const QString kUtf8Key = QStringLiteral("utf8");
const QString kBase64Key = QStringLiteral("base64");

bool isValidUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return !decoder.hasError();
}

} // namespace

FileDefaultsStore::FileDefaultsStore(QString directory, QString domain, Mode mode)
    : m_directory(std::move(directory))
    , m_domain(std::move(domain))
    , m_mode(mode) {
    load();
}

QString FileDefaultsStore::defaultDirectory() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/vantle");
}

QString FileDefaultsStore::filePath() const {
    return m_directory + QLatin1Char('/') + m_domain + QStringLiteral(".json");
}

QJsonValue FileDefaultsStore::encode(const DefaultsValue& value) {
    return std::visit(
        [](const auto& v) -> QJsonValue {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, QByteArray>) {
                // Data that is text (the rule and schedule lists are JSON) stays readable.
                if (isValidUtf8(v)) {
                    return QJsonObject{{kUtf8Key, QString::fromUtf8(v)}};
                }
                return QJsonObject{{kBase64Key, QString::fromLatin1(v.toBase64())}};
            } else if constexpr (std::is_same_v<T, QStringList>) {
                return QJsonArray::fromStringList(v);
            } else if constexpr (std::is_same_v<T, DefaultsValue::Other>) {
                return v.json;
            } else {
                return QJsonValue(v);
            }
        },
        value.storage());
}

DefaultsValue FileDefaultsStore::decode(const QJsonValue& json) {
    switch (json.type()) {
    case QJsonValue::Bool:
        return json.toBool();
    case QJsonValue::Double:
        return json.toDouble();
    case QJsonValue::String:
        return json.toString();
    case QJsonValue::Array: {
        QStringList strings;
        for (const QJsonValue& element : json.toArray()) {
            if (!element.isString()) {
                return DefaultsValue::Other{json};
            }
            strings.append(element.toString());
        }
        return strings;
    }
    case QJsonValue::Object: {
        const QJsonObject object = json.toObject();
        if (object.size() == 1 && object.value(kUtf8Key).isString()) {
            return object.value(kUtf8Key).toString().toUtf8();
        }
        if (object.size() == 1 && object.value(kBase64Key).isString()) {
            auto decoded =
                QByteArray::fromBase64Encoding(object.value(kBase64Key).toString().toLatin1(),
                                               QByteArray::AbortOnBase64DecodingErrors);
            if (decoded) {
                return *decoded;
            }
        }
        return DefaultsValue::Other{json};
    }
    default:
        return DefaultsValue::Other{json};
    }
}

FileDefaultsStore::ReadResult FileDefaultsStore::readFile(const QString& path, QJsonObject* object,
                                                          QString* error) {
    QFile file(path);
    if (!file.exists()) {
        return ReadResult::Missing;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return ReadResult::Unreadable;
    }
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error =
            QStringLiteral("%1 at byte %2").arg(parseError.errorString()).arg(parseError.offset);
        return ReadResult::Corrupt;
    }
    if (!document.isObject()) {
        *error = QStringLiteral("the top level is not an object");
        return ReadResult::Corrupt;
    }
    *object = document.object();
    return ReadResult::Ok;
}

void FileDefaultsStore::load() {
    QString error;
    switch (readFile(filePath(), &m_values, &error)) {
    case ReadResult::Ok:
    case ReadResult::Missing:
        return;
    case ReadResult::Corrupt:
        if (m_mode == Mode::ReadOnly) {
            logLine(QStringLiteral("settings file %1 is unreadable (%2); showing defaults")
                        .arg(filePath(), error));
        } else {
            keepAside(error);
        }
        return;
    case ReadResult::Unreadable:
        // The file may be perfectly good; replacing it would lose what the user set up.
        logLine(QStringLiteral("cannot open settings file %1 (%2); using defaults and leaving "
                               "the file untouched")
                    .arg(filePath(), error));
        m_mode = Mode::ReadOnly;
        return;
    }
}

void FileDefaultsStore::keepAside(const QString& reason) {
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString aside = filePath() + QStringLiteral(".corrupt-") + stamp;
    for (int n = 2; QFileInfo::exists(aside); ++n) {
        aside = filePath() + QStringLiteral(".corrupt-%1-%2").arg(stamp).arg(n);
    }
    if (QFile::rename(filePath(), aside)) {
        logLine(QStringLiteral("settings file %1 is unreadable (%2); kept it as %3 and started "
                               "from defaults")
                    .arg(filePath(), reason, aside));
    } else {
        logLine(QStringLiteral("settings file %1 is unreadable (%2) and could not be moved aside; "
                               "using defaults without saving")
                    .arg(filePath(), reason));
        m_mode = Mode::ReadOnly;
    }
}

std::optional<DefaultsValue> FileDefaultsStore::object(const QString& key) const {
    const auto it = m_values.constFind(key);
    if (it == m_values.constEnd()) {
        return std::nullopt;
    }
    return decode(*it);
}

void FileDefaultsStore::setObject(const QString& key, const DefaultsValue& value) {
    save(key, value);
}

void FileDefaultsStore::removeObject(const QString& key) {
    save(key, std::nullopt);
}

void FileDefaultsStore::save(const QString& key, const std::optional<DefaultsValue>& value) {
    const auto apply = [&](QJsonObject& object) {
        if (value) {
            object.insert(key, encode(*value));
        } else {
            object.remove(key);
        }
    };
    apply(m_values);
    if (m_mode == Mode::ReadOnly) {
        return;
    }

    if (!QDir().mkpath(m_directory)) {
        reportSaveFailure(key, QStringLiteral("cannot create %1").arg(m_directory));
        return;
    }
    QLockFile lock(m_directory + QStringLiteral("/.") + m_domain + QStringLiteral(".lock"));
    lock.setStaleLockTime(10'000);
    if (!lock.tryLock(5'000)) {
        reportSaveFailure(key, QStringLiteral("another process holds the settings lock"));
        return;
    }

    // Start from what is on disk now, so keys another copy wrote since we loaded are kept.
    QJsonObject onDisk;
    QString error;
    switch (readFile(filePath(), &onDisk, &error)) {
    case ReadResult::Ok:
        break;
    case ReadResult::Missing:
        onDisk = m_values;
        break;
    case ReadResult::Corrupt:
        keepAside(error);
        if (m_mode == Mode::ReadOnly) {
            return;
        }
        onDisk = m_values;
        break;
    case ReadResult::Unreadable:
        reportSaveFailure(key, error);
        return;
    }
    apply(onDisk);

    QSaveFile file(filePath());
    if (!file.open(QIODevice::WriteOnly)) {
        reportSaveFailure(key, file.errorString());
        return;
    }
    file.write(QJsonDocument(onDisk).toJson(QJsonDocument::Indented));
    if (!file.commit()) {
        reportSaveFailure(key, file.errorString());
        return;
    }
    m_values = onDisk;
    m_saveFailureReported = false;
}

void FileDefaultsStore::reportSaveFailure(const QString& key, const QString& reason) {
    // One line per run of failures: a read-only home would otherwise log on every change.
    if (m_saveFailureReported) {
        return;
    }
    m_saveFailureReported = true;
    logLine(QStringLiteral("could not save setting \"%1\" to %2: %3; it is kept for this session")
                .arg(key, filePath(), reason));
}

std::optional<DefaultsDomain> FileDefaultsStore::persistentDomain(const QString& name) const {
    QJsonObject object;
    QString error;
    const QString path = m_directory + QLatin1Char('/') + name + QStringLiteral(".json");
    switch (readFile(path, &object, &error)) {
    case ReadResult::Ok:
        break;
    case ReadResult::Missing:
        return std::nullopt;
    case ReadResult::Corrupt:
    case ReadResult::Unreadable:
        logLine(QStringLiteral("ignoring settings file %1: %2").arg(path, error));
        return std::nullopt;
    }
    DefaultsDomain domain;
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        domain.insert(it.key(), decode(it.value()));
    }
    return domain;
}

} // namespace vantle
