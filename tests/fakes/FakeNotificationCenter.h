#pragma once

#include "platform/NotificationCenter.h"

namespace vantle {

// Records what is posted and removed; answers status queries at once with `status`, or never
// when `answersStatus` is false (a notification server that does not reply).
class FakeNotificationCenter final : public NotificationCenter {
    Q_OBJECT
public:
    void setCategories(const QList<NotificationCategory>& list) override { categoryList = list; }
    QList<NotificationCategory> categories() const override { return categoryList; }
    void add(const NotificationRequest& request) override { posted.append(request); }
    void removeDelivered(const QStringList& identifiers) override { removed.append(identifiers); }
    void readAuthorizationStatus(std::function<void(AuthorizationStatus)> done) override {
        if (answersStatus) {
            done(status);
        }
    }
    void requestAuthorization(std::function<void(bool)> done) override {
        ++authorizationRequests;
        if (status == AuthorizationStatus::notDetermined) {
            status = grantOnRequest ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
        }
        done(status == AuthorizationStatus::authorized);
    }

    bool openSettings() override {
        ++settingsOpened;
        return true;
    }

    // The user picks an action on a delivered notification.
    void respond(const QString& request, const QString& action) {
        emit didReceiveResponse(request, action);
    }

    AuthorizationStatus status = AuthorizationStatus::authorized;
    bool grantOnRequest = true;
    bool answersStatus = true;
    QList<NotificationCategory> categoryList;
    QList<NotificationRequest> posted;
    QStringList removed;
    int authorizationRequests = 0;
    int settingsOpened = 0;
};

} // namespace vantle
