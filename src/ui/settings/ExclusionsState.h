#pragma once

#include "model/AppInfo.h"

#include <QList>
#include <QObject>
#include <QStringList>
#include <optional>

namespace vantle {

class AppMonitorService;
class AppSettings;

// What the Exclusions tab shows and does, without widgets: the running apps with whether each is
// excluded, the excluded identifiers of apps not running now, and the changes to the list.
class ExclusionsState final : public QObject {
    Q_OBJECT
public:
    struct RunningApp {
        AppInfo app;
        bool excluded = false;
    };
    // An app the user picked to exclude: its name, and its identifier when it has one.
    struct ChosenApp {
        QString name;
        std::optional<QString> bundleIdentifier;
    };
    // The warning for picked apps that carry nothing to match against.
    struct Refusal {
        QString title;
        QString text;
    };

    ExclusionsState(AppSettings& settings, AppMonitorService& apps, QObject* parent = nullptr);

    QList<RunningApp> runningApps() const;
    // Excluded identifiers that belong to no running app, in the stored order.
    QStringList notRunning() const;

    // Adds or removes the app's identifier; an app without one cannot be excluded.
    void setExcluded(const AppInfo& app, bool excluded);
    void remove(const QString& bundleIdentifier);
    // Adds every picked identifier not yet excluded, and says which apps had none.
    std::optional<Refusal> addChosen(const QList<ChosenApp>& chosen);

signals:
    // The running apps or the excluded identifiers changed.
    void changed();

private:
    AppSettings& m_settings;
    AppMonitorService& m_apps;
};

} // namespace vantle
