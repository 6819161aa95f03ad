#pragma once

#include "model/AppInfo.h"

#include <QAbstractListModel>
#include <QList>

namespace vantle {

class AppListState;

// The rows of the app list, kept in step with the list state by process id: an app that starts
// or quits inserts or removes its one row, a changed name or tick updates that row only. The
// monitor refreshes on every focus change, so the view must not be rebuilt each time.
class AppListModel final : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { PidRole = Qt::UserRole + 1, SelectedRole, BackgroundRole };

    explicit AppListModel(AppListState& state, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

    const AppInfo& app(int row) const { return m_rows.at(row); }

private:
    void sync();
    int rowOf(qint32 pid, int from) const;

    AppListState& m_state;
    QList<AppInfo> m_rows;
    QList<bool> m_selected;
};

} // namespace vantle
