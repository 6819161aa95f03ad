#pragma once

#include "model/QuitWarningStyle.h"

#include <QWidget>

namespace vantle {

class NotificationAuthority;

// Tells the user why warnings appear in the window although notifications were chosen, and
// offers the way to turn them back on. Shown only while that is actually the case.
class NotificationDeniedNotice final : public QWidget {
    Q_OBJECT
public:
    explicit NotificationDeniedNotice(NotificationAuthority& authority, QWidget* parent = nullptr);

    // The chosen warning style (not QWidget's look-and-feel style).
    void setStyle(QuitWarningStyle style);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void updateVisibility();

    NotificationAuthority& m_authority;
    QuitWarningStyle m_style = QuitWarningStyle::notification;
};

} // namespace vantle
