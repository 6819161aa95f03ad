#include "platform/linux/FileDefaultsStore.h"

#include "platform/Log.h"
#include "platform/linux/FileLock.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStringDecoder>
#include <QThread>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace vantle {

namespace {

const QString kUtf8Key = QStringLiteral("utf8");
const QString kBase64Key = QStringLiteral("base64");

using namespace std::chrono_literals;

// A rival holds the lock only for one read and write: retry soon, then back off. A folder that
// cannot be written is retried slowly, in case the user fixes it while the app runs.
constexpr Milliseconds kFirstRetry = 20ms;
constexpr Milliseconds kLongestBusyRetry = 1s;
constexpr Milliseconds kFailedRetry = 30s;
// Busy for this long is worth a line in the log.
constexpr Milliseconds kReportBusyAfter = 3s;
// On the way out the changes are worth a short wait.
constexpr Milliseconds kFlushPatience = 3s;

bool isValidUtf8(const QByteArray& bytes) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    return !decoder.hasError();
}

} // namespace

FileDefaultsStore::FileDefaultsStore(QString directory, QString domain, Clock& clock, Mode mode)
    : m_directory(std::move(directory))
    , m_domain(std::move(domain))
    , m_clock(clock)
    , m_mode(mode) {
    load();
    if (m_mode == Mode::ReadWrite) {
        removeLeftoverTempFiles();
    }
}

FileDefaultsStore::~FileDefaultsStore() {
    flush();
}

QString FileDefaultsStore::defaultDirectory() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/vantle");
}

QString FileDefaultsStore::filePath() const {
    return m_directory + QLatin1Char('/') + m_domain + QStringLiteral(".json");
}

QString FileDefaultsStore::lockPath() const {
    return m_directory + QStringLiteral("/.") + m_domain + QStringLiteral(".lock");
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

void FileDefaultsStore::removeLeftoverTempFiles() {
    // A save killed before its rename leaves "<file>.XXXXXX" behind. Only a copy holding the lock
    // may remove them: a live copy's save in progress looks just the same.
    FileLock lock(lockPath());
    if (lock.tryLock() != FileLock::Result::Acquired) {
        return;
    }
    const QString fileName = m_domain + QStringLiteral(".json");
    const QRegularExpression leftover(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(fileName) + QStringLiteral("\\.[A-Za-z0-9]{6}")));
    const QStringList candidates =
        QDir(m_directory).entryList({fileName + QStringLiteral(".*")}, QDir::Files | QDir::Hidden);
    for (const QString& name : candidates) {
        if (leftover.match(name).hasMatch()) {
            QFile::remove(m_directory + QLatin1Char('/') + name);
        }
    }
}

void FileDefaultsStore::setObject(const QString& key, const DefaultsValue& value) {
    change(key, encode(value));
}

void FileDefaultsStore::removeObject(const QString& key) {
    change(key, std::nullopt);
}

void FileDefaultsStore::change(const QString& key, const std::optional<QJsonValue>& value) {
    if (value) {
        m_values.insert(key, *value);
    } else {
        m_values.remove(key);
    }
    if (m_mode == Mode::ReadOnly) {
        return;
    }
    m_pending.insert(key, value);
    // While a retry is due the change simply joins the queue.
    if (!m_retry) {
        save();
    }
}

void FileDefaultsStore::save() {
    m_retry.reset();
    const SaveResult result = writePending();
    if (result == SaveResult::Saved) {
        if (m_busyReported) {
            logLine(QStringLiteral("settings saved to %1 once the lock was free").arg(filePath()));
        }
        m_retryDelay = Milliseconds(0);
        m_busySince.reset();
        m_busyReported = false;
        m_saveFailureReported = false;
        return;
    }
    retryLater(result);
}

void FileDefaultsStore::retryLater(SaveResult result) {
    if (result == SaveResult::Busy) {
        const Milliseconds now = m_clock.monotonicNow();
        if (!m_busySince) {
            m_busySince = now;
        }
        m_retryDelay = m_retryDelay < kFirstRetry ? kFirstRetry
                                                  : std::min(m_retryDelay * 2, kLongestBusyRetry);
        if (!m_busyReported && now - *m_busySince >= kReportBusyAfter) {
            m_busyReported = true;
            const std::optional<qint64> holder = FileLock(lockPath()).holderPid();
            logLine(QStringLiteral("settings lock %1 is held by %2; the changes are kept and "
                                   "saved as soon as it is free")
                        .arg(lockPath(), holder ? QStringLiteral("process %1").arg(*holder)
                                                : QStringLiteral("another process")));
        }
    } else {
        m_retryDelay = kFailedRetry;
    }
    m_retry = m_clock.singleShot(
        m_retryDelay, [this] { save(); }, m_retryDelay / 4);
}

FileDefaultsStore::SaveResult FileDefaultsStore::writePending() {
    if (m_pending.isEmpty()) {
        return SaveResult::Saved;
    }
    if (!QDir().mkpath(m_directory)) {
        reportSaveFailure(QStringLiteral("cannot create the folder %1").arg(m_directory));
        return SaveResult::Failed;
    }
    // Name the real obstacle: without this, a read-only folder looks like a lock never freed.
    if (::faccessat(AT_FDCWD, QFile::encodeName(m_directory).constData(), W_OK, AT_EACCESS) != 0) {
        reportSaveFailure(QStringLiteral("the folder %1 is not writable (%2)")
                              .arg(m_directory, QString::fromLocal8Bit(std::strerror(errno))));
        return SaveResult::Failed;
    }
    FileLock lock(lockPath());
    switch (lock.tryLock()) {
    case FileLock::Result::Acquired:
        break;
    case FileLock::Result::Busy:
        return SaveResult::Busy;
    case FileLock::Result::Failed:
        reportSaveFailure(QStringLiteral("cannot open the lock file %1 (%2)")
                              .arg(lockPath(), lock.errorString()));
        return SaveResult::Failed;
    }

    const auto apply = [this](QJsonObject& object) {
        for (auto it = m_pending.cbegin(); it != m_pending.cend(); ++it) {
            if (it.value()) {
                object.insert(it.key(), *it.value());
            } else {
                object.remove(it.key());
            }
        }
    };
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
            m_pending.clear();
            return SaveResult::Saved;
        }
        onDisk = m_values;
        break;
    case ReadResult::Unreadable:
        reportSaveFailure(error);
        return SaveResult::Failed;
    }
    apply(onDisk);

    QSaveFile file(filePath());
    if (!file.open(QIODevice::WriteOnly)) {
        reportSaveFailure(file.errorString());
        return SaveResult::Failed;
    }
    file.write(QJsonDocument(onDisk).toJson(QJsonDocument::Indented));
    if (!file.commit()) {
        reportSaveFailure(file.errorString());
        return SaveResult::Failed;
    }
    m_values = onDisk;
    m_pending.clear();
    return SaveResult::Saved;
}

void FileDefaultsStore::flush() {
    if (m_pending.isEmpty()) {
        return;
    }
    m_retry.reset();
    // Quitting is the one time a short wait is fine; the clock's timers no longer run.
    const QDeadlineTimer patience(kFlushPatience);
    SaveResult result = writePending();
    while (result == SaveResult::Busy && !patience.hasExpired()) {
        QThread::msleep(kFirstRetry.count());
        result = writePending();
    }
    if (result == SaveResult::Busy) {
        logLine(QStringLiteral("could not save %1 changed setting(s) to %2 before quitting: "
                               "another process held the lock %3")
                    .arg(m_pending.size())
                    .arg(filePath(), lockPath()));
    } else if (result == SaveResult::Failed) {
        logLine(QStringLiteral("could not save %1 changed setting(s) to %2 before quitting; see "
                               "the reason above")
                    .arg(m_pending.size())
                    .arg(filePath()));
    }
}

void FileDefaultsStore::reportSaveFailure(const QString& reason) {
    // One line per run of failures: a read-only home would otherwise log on every change.
    if (m_saveFailureReported) {
        return;
    }
    m_saveFailureReported = true;
    logLine(QStringLiteral("could not save settings to %1: %2; changes are kept for this session "
                           "and saving is retried")
                .arg(filePath(), reason));
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
