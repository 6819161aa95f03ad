#include "app/VantleApp.h"

#include "app/AppDelegate.h"
#include "app/AppListing.h"
#include "app/TerminationSignals.h"
#include "model/AppCommand.h"
#include "model/AppSettings.h"
#include "monitor/AppMonitorService.h"
#include "platform/InstanceGuard.h"
#include "platform/Log.h"
#include "platform/PlatformFactory.h"
#include "system/NotificationAuthority.h"
#include "ui/settings/SettingsTab.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>

namespace vantle {

namespace {

const QString kDiagnosticsOption = QStringLiteral("diagnostics");
const QString kListAppsOption = QStringLiteral("list-apps");
const QString kCommandOption = QStringLiteral("command");
const QString kSettingsOption = QStringLiteral("settings");
// How long --diagnostics waits for the notification service to say whether it may post.
constexpr int kStatusWaitMs = 3'000;

// The notification status as the running app would report it.
QString notificationStatus(NotificationCenter& center) {
    std::optional<AuthorizationStatus> status;
    QEventLoop loop;
    center.readAuthorizationStatus([&](AuthorizationStatus answer) {
        status = answer;
        loop.quit();
    });
    if (!status) {
        QTimer::singleShot(kStatusWaitMs, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return NotificationAuthority::statusText(status.value_or(AuthorizationStatus::notDetermined));
}

void describeApplication() {
    QCoreApplication::setApplicationName(QStringLiteral("Vantle"));
    QCoreApplication::setApplicationVersion(
        QStringLiteral(VANTLE_VERSION " (" VANTLE_BUILD_NUMBER ")"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("pelmark.com"));
}

QStringList globalCommandNames() {
    QStringList names;
    for (const AppCommand command : allCases<AppCommand>()) {
        if (isGlobalCommand(command)) {
            names << rawValue(command);
        }
    }
    return names;
}

// The system-wide command a raw value names; nothing for the others.
std::optional<AppCommand> globalCommand(const QString& name) {
    const auto command = fromRawValue<AppCommand>(name);
    return command && isGlobalCommand(*command) ? command : std::nullopt;
}

// `vantle --command NAME`: hands the command to the running copy.
int sendCommand(const QString& name) {
    if (!globalCommand(name)) {
        logLine(QCoreApplication::translate("CommandLine",
                                            "unknown command \"%1\". The commands are: %2.")
                    .arg(name, globalCommandNames().join(QStringLiteral(", "))));
        return 2;
    }
    const std::unique_ptr<InstanceGuard> guard = makeInstanceGuard();
    QString error;
    switch (guard->sendAction(name, &error)) {
    case InstanceGuard::Delivery::Delivered:
        return 0;
    case InstanceGuard::Delivery::NotRunning:
        logLine(
            QCoreApplication::translate(
                "CommandLine", "Vantle is not running, so nothing can %1%2. Start Vantle first.")
                .arg(name, error.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(error)));
        return 1;
    case InstanceGuard::Delivery::Failed:
        logLine(QCoreApplication::translate("CommandLine",
                                            "the running Vantle did not take the command %1: %2")
                    .arg(name, error));
        return 1;
    }
    return 1;
}

void addOptions(QCommandLineParser& parser) {
    parser.setApplicationDescription(QCoreApplication::translate(
        "CommandLine", "Quits idle apps, quits everything after the machine sits idle, and runs "
                       "weekly power schedules.\nStarted without options, Vantle runs in the "
                       "system tray; a second start shows the running copy."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOption(QCommandLineOption(
        kDiagnosticsOption,
        QCoreApplication::translate("CommandLine",
                                    "Print the support report of this user's settings and exit.")));
    parser.addOption(QCommandLineOption(
        kListAppsOption,
        QCoreApplication::translate(
            "CommandLine", "Print the running applications as Vantle sees them and exit.")));
    parser.addOption(QCommandLineOption(
        kCommandOption,
        QCoreApplication::translate(
            "CommandLine",
            "Ask the running Vantle to run <name>, as its shortcut does: %1. Bind this "
            "in your desktop's keyboard settings.")
            .arg(globalCommandNames().join(QStringLiteral(", "))),
        QStringLiteral("name")));
    parser.addOption(QCommandLineOption(
        kSettingsOption,
        QCoreApplication::translate("CommandLine",
                                    "Open the settings window, of the running Vantle if one "
                                    "runs, on [tab] when given.")));
    QStringList tabs;
    for (const SettingsTab tab : allCases<SettingsTab>()) {
        tabs << rawValue(tab);
    }
    parser.addPositionalArgument(QStringLiteral("tab"),
                                 QCoreApplication::translate("CommandLine", "With --settings: %1.")
                                     .arg(tabs.join(QStringLiteral(", "))),
                                 QStringLiteral("[tab]"));
}

// `vantle --settings [tab]`: the tab asked for, none for the one last shown; false when the
// arguments name no tab.
bool settingsTab(const QCommandLineParser& parser, std::optional<SettingsTab>* tab) {
    const QStringList positional = parser.positionalArguments();
    if (positional.isEmpty()) {
        return true;
    }
    *tab = positional.size() == 1 ? fromRawValue<SettingsTab>(positional.first()) : std::nullopt;
    if (!*tab) {
        QStringList tabs;
        for (const SettingsTab known : allCases<SettingsTab>()) {
            tabs << rawValue(known);
        }
        logLine(QStringLiteral("unknown settings tab \"%1\". The tabs are: %2.")
                    .arg(positional.join(QLatin1Char(' ')), tabs.join(QStringLiteral(", "))));
        return false;
    }
    return true;
}

void printLine(const QString& text) {
    std::fputs(text.toUtf8().constData(), stdout);
    std::fputc('\n', stdout);
}

bool hasDisplay() {
#ifdef Q_OS_LINUX
    return qEnvironmentVariableIsSet("QT_QPA_PLATFORM") || qEnvironmentVariableIsSet("DISPLAY") ||
           qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
#else
    return true;
#endif
}

} // namespace

VantleApp::VantleApp() = default;
VantleApp::~VantleApp() = default;

bool VantleApp::isCommandLineOnly(const QStringList& arguments) {
    static const QStringList options{QStringLiteral("-h"),
                                     QStringLiteral("--help"),
                                     QStringLiteral("-?"),
                                     QStringLiteral("--help-all"),
                                     QStringLiteral("-v"),
                                     QStringLiteral("--version"),
                                     QStringLiteral("--diagnostics"),
                                     QStringLiteral("--list-apps"),
                                     QStringLiteral("--command")};
    return std::any_of(arguments.cbegin() + (arguments.isEmpty() ? 0 : 1), arguments.cend(),
                       [](const QString& argument) {
                           return options.contains(argument) ||
                                  argument.startsWith(QLatin1String("--command="));
                       });
}

int VantleApp::run(int argc, char* argv[]) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    describeApplication();
    if (isCommandLineOnly(arguments)) {
        QCoreApplication app(argc, argv);
        return runCommandLine();
    }
    if (!hasDisplay()) {
        logLine(QStringLiteral("no graphical display (neither DISPLAY nor WAYLAND_DISPLAY is set). "
                               "Start Vantle from your desktop session."));
        return 1;
    }
    QApplication app(argc, argv);
    return runApplication();
}

int VantleApp::runCommandLine() {
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(QCoreApplication::arguments()); // answers --help and --version itself

    if (parser.isSet(kCommandOption)) {
        return sendCommand(parser.value(kCommandOption));
    }
    if (parser.isSet(kDiagnosticsOption)) {
        const std::unique_ptr<Platform> platform = makePlatform(PlatformUse::Inspection);
        const AppSettings settings(*platform->defaults, *platform->bundle, *platform->clock,
                                   *platform->texts);
        printLine(settings.diagnosticsReport(notificationStatus(*platform->notifications)));
    }
    if (parser.isSet(kListAppsOption)) {
        const std::unique_ptr<Platform> platform = makePlatform(PlatformUse::AppListing);
        if (!platform->workspace->isSupported()) {
            return 1;
        }
        AppMonitorService monitor(*platform->workspace, *platform->clock,
                                  static_cast<qint32>(QCoreApplication::applicationPid()));
        printLine(appListing(monitor.runningApps(), monitor.lastActiveDates()));
    }
    return 0;
}

int VantleApp::runApplication() {
    QCommandLineParser parser;
    addOptions(parser);
    parser.process(QCoreApplication::arguments()); // rejects unknown options with a message
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setDesktopFileName(QStringLiteral(VANTLE_BUNDLE_ID));

    // From the first moment, so a stop request during start-up still ends the process cleanly.
    TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &TerminationSignals::terminationRequested, qApp,
                     [](int) { QCoreApplication::quit(); });

    const bool openSettings = parser.isSet(kSettingsOption);
    std::optional<SettingsTab> tab;
    if (openSettings && !settingsTab(parser, &tab)) {
        return 2;
    }

    const std::unique_ptr<InstanceGuard> guard = makeInstanceGuard();
    if (openSettings) {
        // A running copy opens its own window; only without one does this launch become it.
        QString error;
        switch (guard->sendAction(AppDelegate::settingsAction(tab), &error)) {
        case InstanceGuard::Delivery::Delivered:
            return 0;
        case InstanceGuard::Delivery::Failed:
            logLine(QCoreApplication::translate("CommandLine",
                                                "the running Vantle did not open its settings: %1")
                        .arg(error));
            return 1;
        case InstanceGuard::Delivery::NotRunning:
            break;
        }
    }
    if (guard->claim() == InstanceGuard::Claim::AlreadyRunning) {
        return 0;
    }

    const std::unique_ptr<Platform> platform = makePlatform(PlatformUse::Application);
    m_appDelegate = std::make_unique<AppDelegate>(*platform);
    AppDelegate* delegate = m_appDelegate.get();
    QObject::connect(guard.get(), &InstanceGuard::activationRequested, delegate, [delegate] {
        logLine(QStringLiteral("another launch asked to show Vantle"));
        delegate->showAppList();
    });
    // `vantle --command NAME` from a terminal or the desktop's own shortcut settings, and
    // `vantle --settings [tab]`.
    QObject::connect(guard.get(), &InstanceGuard::actionRequested, delegate,
                     &AppDelegate::handleAction);

    m_appDelegate->applicationDidFinishLaunching();
    if (openSettings) {
        m_appDelegate->showSettings(tab);
    }
    const int status = QApplication::exec();
    m_appDelegate.reset();
    // A save that found the settings lock busy is still queued; it must not go with the process.
    platform->defaults->flush();
    return status;
}

} // namespace vantle
