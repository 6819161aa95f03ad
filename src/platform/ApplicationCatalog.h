#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace vantle {

// The applications installed for this user, as the desktop's launcher knows them.
class ApplicationCatalog {
public:
    struct Application {
        QString id;       // the desktop-entry id without ".desktop": what rules and exclusions hold
        QString name;     // localised
        QString iconName; // an icon theme name or a file path; empty when the entry names none
    };

    virtual ~ApplicationCatalog() = default;

    // The applications a launcher would show (hidden and NoDisplay entries left out), by name.
    // Empty when nothing can be read.
    virtual QList<Application> installedApplications() = 0;
    // The application a desktop-entry file anywhere on disk describes; nothing when the file
    // cannot be read or is not an application entry.
    virtual std::optional<Application> applicationAt(const QString& path) = 0;
};

} // namespace vantle
