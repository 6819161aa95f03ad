#pragma once

#include <QObject>

namespace vantle {

class AppSettings;
struct Platform;

// Owns one instance of every service for the life of the process, wires them together with
// callbacks and starts their work. Construction creates the services and starts nothing; the work
// begins in applicationDidFinishLaunching().
class AppDelegate final : public QObject {
    Q_OBJECT
public:
    explicit AppDelegate(Platform& platform, QObject* parent = nullptr);
    ~AppDelegate() override;

    void applicationDidFinishLaunching();

    AppSettings& settings() const { return *m_settings; }

private:
    Platform& m_platform;
    AppSettings* m_settings;
};

} // namespace vantle
