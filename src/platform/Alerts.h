#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace vantle {

// A modal question with an optional check box.
struct AlertRequest {
    QString messageText;
    QString informativeText;
    // The first button is the default one.
    QStringList buttons;
    // Shown only when set.
    std::optional<QString> checkBoxTitle{};
    QString checkBoxToolTip{};
};

struct AlertResponse {
    // Index into the request's buttons; closing the alert any other way picks the last one.
    int button = 0;
    bool checkBoxChecked = false;
};

// The application's modal alerts, and bringing its own windows to the front afterwards.
class Alerts {
public:
    virtual ~Alerts() = default;

    // Brings the application to the front so an alert is not hidden behind other windows.
    virtual void activateApp() = 0;
    // Blocks until the user answers.
    virtual AlertResponse runModal(const AlertRequest& request) = 0;
    // Every visible window of the application titled `title` is raised and given focus.
    virtual void bringWindowsForward(const QString& title) = 0;
};

} // namespace vantle
