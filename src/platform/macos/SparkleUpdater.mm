#include "platform/macos/SparkleUpdater.h"

#import <AppKit/AppKit.h>
#import <Sparkle/Sparkle.h>

// The user-driver delegate, and the observer of the updater's canCheckForUpdates.
@interface VantleUpdaterDriver : NSObject <SPUStandardUserDriverDelegate>
@property(nonatomic, assign) vantle::SparkleUpdater* owner;
@end

@implementation VantleUpdaterDriver
- (BOOL)supportsGentleScheduledUpdateReminders {
    return YES;
}
// An agent's update window would open behind the frontmost app after a background check.
- (void)standardUserDriverWillHandleShowingUpdate:(BOOL)handleShowingUpdate
                                        forUpdate:(SUAppcastItem*)update
                                            state:(SPUUserUpdateState*)state {
    if (handleShowingUpdate && !state.userInitiated) {
        [NSApp activateIgnoringOtherApps:YES];
    }
}
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary<NSKeyValueChangeKey, id>*)change
                       context:(void*)context {
    if (self.owner) {
        self.owner->publishCanCheck([change[NSKeyValueChangeNewKey] boolValue]);
    }
}
@end

namespace vantle {

struct SparkleUpdater::Objects {
    VantleUpdaterDriver* driver = nil;
    SPUStandardUpdaterController* controller = nil;
};

SparkleUpdater::SparkleUpdater(QObject* parent)
    : Updater(parent)
    , m_objects(new Objects) {
    m_objects->driver = [[VantleUpdaterDriver alloc] init];
    m_objects->driver.owner = this;
    m_objects->controller =
        [[SPUStandardUpdaterController alloc] initWithStartingUpdater:NO
                                                      updaterDelegate:nil
                                                   userDriverDelegate:m_objects->driver];
    [m_objects->controller.updater
        addObserver:m_objects->driver
         forKeyPath:@"canCheckForUpdates"
            options:NSKeyValueObservingOptionInitial | NSKeyValueObservingOptionNew
            context:nil];
}

SparkleUpdater::~SparkleUpdater() {
    [m_objects->controller.updater removeObserver:m_objects->driver
                                       forKeyPath:@"canCheckForUpdates"];
    m_objects->driver.owner = nullptr;
    delete m_objects;
}

void SparkleUpdater::startUpdater() {
    [m_objects->controller startUpdater];
}

bool SparkleUpdater::canCheckForUpdates() const {
    return m_objects->controller.updater.canCheckForUpdates;
}

bool SparkleUpdater::automaticallyChecksForUpdates() const {
    return m_objects->controller.updater.automaticallyChecksForUpdates;
}

void SparkleUpdater::setAutomaticallyChecksForUpdates(bool enabled) {
    m_objects->controller.updater.automaticallyChecksForUpdates = enabled;
}

std::optional<QDateTime> SparkleUpdater::lastUpdateCheckDate() const {
    NSDate* date = m_objects->controller.updater.lastUpdateCheckDate;
    if (!date) {
        return std::nullopt;
    }
    return QDateTime::fromNSDate(date);
}

void SparkleUpdater::checkForUpdates() {
    [m_objects->controller checkForUpdates:nil];
}

} // namespace vantle
