#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QSet>

namespace vantle {

// The processes that show a StatusNotifierItem, as registered with the session's
// org.kde.StatusNotifierWatcher. Without a watcher the set is simply empty.
class StatusNotifierTray final : public QObject {
    Q_OBJECT
public:
    explicit StatusNotifierTray(QDBusConnection bus, QObject* parent = nullptr);

    const QSet<qint32>& pids() const { return m_pids; }

signals:
    void pidsChanged(const QSet<qint32>& pids);

private slots:
    void reload();

private:
    qint32 pidOfItem(const QString& item);

    QDBusConnection m_bus;
    QSet<qint32> m_pids;
};

} // namespace vantle
