#include "app/AppDelegate.h"
#include "fakes/FakeBundleInfo.h"
#include "fakes/FakeLoginItem.h"
#include "fakes/InlineExecutor.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "platform/Platform.h"

#include <QTest>

using namespace vantle;

namespace {

struct FakePlatform {
    Platform platform;
    MemoryDefaultsStore* defaults;
    FakeLoginItem* loginItem;

    FakePlatform() {
        auto store = std::make_unique<MemoryDefaultsStore>();
        auto login = std::make_unique<FakeLoginItem>();
        defaults = store.get();
        loginItem = login.get();
        platform.clock = std::make_unique<ManualClock>();
        platform.executor = std::make_unique<InlineExecutor>();
        platform.defaults = std::move(store);
        platform.bundle = std::make_unique<FakeBundleInfo>();
        platform.loginItem = std::move(login);
        platform.texts = &ProductTexts::linuxDesktop();
    }
};

} // namespace

class TestAppDelegate : public QObject {
    Q_OBJECT

private slots:
    // Settings carried over from an earlier version bring their login item with them, once.
    void migratedLaunchAtLoginRecreatesTheLoginItemOnce() {
        FakePlatform fake;
        fake.defaults->otherDomains[QStringLiteral("com.quorel.vantle")] = {
            {QStringLiteral("launchAtLogin"), true}};
        {
            AppDelegate delegate(fake.platform);
            delegate.applicationDidFinishLaunching();
        }
        QCOMPARE(fake.loginItem->registerCalls, 1);
        QVERIFY(fake.loginItem->registered);

        AppDelegate later(fake.platform);
        later.applicationDidFinishLaunching();
        QVERIFY(later.settings().launchAtLogin());
        QCOMPARE(fake.loginItem->registerCalls, 1);
    }

    void noLoginItemWithoutMigrationOrWithoutTheSetting() {
        FakePlatform fresh;
        fresh.defaults->values[QStringLiteral("launchAtLogin")] = true;
        AppDelegate(fresh.platform).applicationDidFinishLaunching();
        QCOMPARE(fresh.loginItem->registerCalls, 0);

        FakePlatform migratedOff;
        migratedOff.defaults->otherDomains[QStringLiteral("com.yourname.EBB")] = {
            {QStringLiteral("idleQuitEnabled"), true}};
        AppDelegate(migratedOff.platform).applicationDidFinishLaunching();
        QCOMPARE(migratedOff.loginItem->registerCalls, 0);
    }

    void refusedLoginItemIsLoggedAndLaunchGoesOn() {
        FakePlatform fake;
        fake.loginItem->failRegistration = true;
        fake.defaults->otherDomains[QStringLiteral("com.quorel.vantle")] = {
            {QStringLiteral("launchAtLogin"), true}};
        LogCapture log;
        AppDelegate delegate(fake.platform);
        delegate.applicationDidFinishLaunching();
        QCOMPARE(log.count(QStringLiteral("login item")), 1);
        QVERIFY(delegate.settings().launchAtLogin());
    }
};

QTEST_MAIN(TestAppDelegate)
#include "tst_appdelegate.moc"
