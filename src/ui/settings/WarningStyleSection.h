#pragma once

#include <QList>
#include <QWidget>

class QComboBox;
class QLabel;

namespace vantle {

class AppSettings;

// "Warn me with", the chosen style's explanation and, unless the style is never, the grace
// period: the same controls for the automatic quits and for the schedules.
class WarningStyleSection final : public QWidget {
    Q_OBJECT
public:
    enum class Warnings { quit, schedule };
    struct HelpTexts {
        QString notification;
        QString window;
        QString never;
    };

    WarningStyleSection(AppSettings& settings, Warnings warnings, HelpTexts help,
                        QWidget* parent = nullptr);

    // The grace periods offered, in seconds.
    static const QList<int> kGraceSeconds;

private:
    QString style() const;
    double seconds() const;
    void showStyle();
    // A stored period that is not one of the offers is shown as it is rather than replaced.
    void offerStoredSeconds();

    AppSettings& m_settings;
    Warnings m_warnings;
    HelpTexts m_help;
    QComboBox* m_style;
    QLabel* m_styleHelp;
    QLabel* m_graceLabel;
    QComboBox* m_grace;
};

} // namespace vantle
