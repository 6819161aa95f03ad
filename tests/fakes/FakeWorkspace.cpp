#include "fakes/FakeWorkspace.h"

namespace vantle {

// A request to a running app succeeds; when the app `exits`, it leaves the list.
static bool end(FakeRunningApplication& app, bool exits) {
    if (app.terminated) {
        return false;
    }
    if (exits && app.workspace) {
        app.workspace->exit(app.pid);
    }
    return true;
}

bool FakeRunningApplication::terminate() {
    ++terminateRequests;
    return end(*this, !refusesToQuit);
}

bool FakeRunningApplication::forceTerminate() {
    ++forceRequests;
    return end(*this, true);
}

bool FakeRunningApplication::hide() {
    ++hideRequests;
    return !terminated;
}

QList<RunningApplicationRef> FakeWorkspace::runningApplications() const {
    const_cast<FakeWorkspace*>(this)->listCalls++;
    return {apps.cbegin(), apps.cend()};
}

RunningApplicationRef FakeWorkspace::application(qint32 pid) const {
    for (const auto& app : apps) {
        if (app->pid == pid) {
            return app;
        }
    }
    return nullptr;
}

std::shared_ptr<FakeRunningApplication> FakeWorkspace::add(qint32 pid, std::optional<QString> name,
                                                           std::optional<QString> bundleId,
                                                           ActivationPolicy policy) {
    auto app =
        std::make_shared<FakeRunningApplication>(pid, std::move(name), std::move(bundleId), policy);
    app->workspace = this;
    apps.append(app);
    return app;
}

void FakeWorkspace::exit(qint32 pid) {
    for (qsizetype i = 0; i < apps.size(); ++i) {
        if (apps[i]->pid == pid) {
            apps[i]->terminated = true;
            apps.removeAt(i);
            return;
        }
    }
}

void FakeWorkspace::emitTerminate(qint32 pid) {
    RunningApplicationRef app = application(pid);
    exit(pid);
    emit didTerminateApplication(app);
}

} // namespace vantle
