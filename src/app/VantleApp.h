#pragma once

#include <QStringList>
#include <memory>

namespace vantle {

class AppDelegate;

// The process: command-line handling, the single-copy check, the delegate and the event loop.
class VantleApp final {
public:
    VantleApp();
    ~VantleApp();

    int run(int argc, char* argv[]);

    // Options answered on the terminal without starting the user interface.
    static bool isCommandLineOnly(const QStringList& arguments);

private:
    int runCommandLine();
    int runApplication();

    std::unique_ptr<AppDelegate> m_appDelegate;
};

} // namespace vantle
