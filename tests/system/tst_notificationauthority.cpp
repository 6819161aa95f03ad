#include "fakes/FakeNotificationCenter.h"
#include "system/NotificationAuthority.h"
#include "ui/settings/NotificationDeniedNotice.h"

#include <QPushButton>
#include <QTest>

using namespace vantle;
using Status = AuthorizationStatus;

class TestNotificationAuthority : public QObject {
    Q_OBJECT

private slots:
    void followsTheCentreAndPostsOnlyWhenAuthorizedOrProvisional() {
        FakeNotificationCenter center;
        NotificationAuthority authority(center);
        const QList<std::pair<Status, bool>> cases{{Status::provisional, true},
                                                   {Status::ephemeral, false},
                                                   {Status::denied, false},
                                                   {Status::notDetermined, false},
                                                   {Status::authorized, true}};
        for (const auto& [status, allowed] : cases) {
            center.status = status;
            emit center.authorizationMayHaveChanged();
            QCOMPARE(authority.status(), status);
            QCOMPARE(authority.canPostNotifications(), allowed);
        }
        QCOMPARE(NotificationAuthority::statusText(Status::denied),
                 QStringLiteral("DENIED (warnings fall back to the window)"));
    }

    void noticeShowsOnlyWhileNotificationsAreChosenButDenied() {
        FakeNotificationCenter center;
        center.status = Status::denied;
        NotificationAuthority authority(center);
        QWidget window;
        NotificationDeniedNotice notice(authority, &window);
        QVERIFY(!notice.isHidden());
        for (const QuitWarningStyle style : {QuitWarningStyle::window, QuitWarningStyle::never}) {
            notice.setStyle(style);
            QVERIFY(notice.isHidden());
        }
        notice.setStyle(QuitWarningStyle::notification);
        for (const Status status : {Status::notDetermined, Status::authorized, Status::denied}) {
            center.status = status;
            emit center.authorizationMayHaveChanged();
            QCOMPARE(notice.isHidden(), status != Status::denied);
        }

        auto* button = notice.findChild<QPushButton*>();
        QVERIFY(button);
        QCOMPARE(button->text(), QStringLiteral("Open Notification Settings\u2026"));
        button->click();
        QCOMPARE(center.settingsOpened, 1);
    }
};

QTEST_MAIN(TestNotificationAuthority)
#include "tst_notificationauthority.moc"
