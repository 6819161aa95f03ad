#pragma once

#include <QObject>

class QSocketNotifier;

namespace vantle {

// Turns SIGINT and SIGTERM into a Qt signal on the main thread (self-pipe), so the event loop can
// wind down normally instead of the process dying mid-write.
class TerminationSignals final : public QObject {
    Q_OBJECT
public:
    explicit TerminationSignals(QObject* parent = nullptr);
    ~TerminationSignals() override;

signals:
    void terminationRequested(int signalNumber);

private:
    void readSignal();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace vantle
