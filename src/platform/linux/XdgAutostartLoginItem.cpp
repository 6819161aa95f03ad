#include "platform/linux/XdgAutostartLoginItem.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace vantle {

namespace {

// Quotes an Exec argument as desktop entries require: reserved characters force double quotes,
// inside which ", `, $ and \ are escaped; '%' is doubled so it is not taken for a field code.
QString quoteExecArgument(QString argument) {
    argument.replace(QLatin1Char('%'), QStringLiteral("%%"));
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    const bool needsQuotes = std::any_of(argument.cbegin(), argument.cend(), [](QChar c) {
        return reserved.contains(c) || c == QLatin1Char('=');
    });
    if (!needsQuotes) {
        return argument;
    }
    QString quoted;
    for (QChar c : argument) {
        if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('$') ||
            c == QLatin1Char('\\')) {
            quoted += QLatin1Char('\\');
        }
        quoted += c;
    }
    // Desktop-entry string values unescape backslashes once more before Exec is split.
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

} // namespace

XdgAutostartLoginItem::XdgAutostartLoginItem(QString autostartDirectory, QString desktopId,
                                             QString executable)
    : m_directory(std::move(autostartDirectory))
    , m_desktopId(std::move(desktopId))
    , m_executable(std::move(executable)) {}

QString XdgAutostartLoginItem::defaultDirectory() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart");
}

QString XdgAutostartLoginItem::entryPath() const {
    return m_directory + QLatin1Char('/') + m_desktopId + QStringLiteral(".desktop");
}

bool XdgAutostartLoginItem::isRegistered() const {
    return QFile::exists(entryPath());
}

bool XdgAutostartLoginItem::registerItem(QString* error) {
    if (!QDir().mkpath(m_directory)) {
        if (error) {
            *error = QStringLiteral("cannot create %1").arg(m_directory);
        }
        return false;
    }
    QSaveFile file(entryPath());
    if (!file.open(QIODevice::WriteOnly)) {
        if (error) {
            *error = file.errorString();
        }
        return false;
    }
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Vantle\n"
                                         "Comment=Quits idle apps and runs power schedules\n"
                                         "Exec=%1\n"
                                         "Icon=%2\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(quoteExecArgument(m_executable), m_desktopId);
    file.write(entry.toUtf8());
    if (!file.commit()) {
        if (error) {
            *error = file.errorString();
        }
        return false;
    }
    return true;
}

bool XdgAutostartLoginItem::unregisterItem(QString* error) {
    QFile file(entryPath());
    if (!file.exists() || file.remove()) {
        return true;
    }
    if (error) {
        *error = file.errorString();
    }
    return false;
}

} // namespace vantle
