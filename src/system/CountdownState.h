#pragma once

#include "system/CountdownContent.h"

#include <QObject>

namespace vantle {

// A warning's countdown as a panel observes it: the seconds left, and what the panel says.
class CountdownState : public QObject {
    Q_OBJECT
    Q_PROPERTY(int secondsLeft READ secondsLeft NOTIFY secondsLeftChanged)
public:
    using QObject::QObject;

    int secondsLeft() const { return m_secondsLeft; }
    void setSecondsLeft(int seconds) {
        m_secondsLeft = seconds;
        emit secondsLeftChanged();
    }

    virtual CountdownContent content() const = 0;

signals:
    void secondsLeftChanged();
    void contentChanged();

private:
    int m_secondsLeft = 0;
};

} // namespace vantle
