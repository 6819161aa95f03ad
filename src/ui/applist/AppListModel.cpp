#include "ui/applist/AppListModel.h"

#include "ui/applist/AppListState.h"

namespace vantle {

AppListModel::AppListModel(AppListState& state, QObject* parent)
    : QAbstractListModel(parent)
    , m_state(state) {
    connect(&m_state, &AppListState::changed, this, &AppListModel::sync);
    sync();
}

int AppListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant AppListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_rows.size()) {
        return {};
    }
    const AppInfo& app = m_rows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return app.name;
    case Qt::DecorationRole:
        return app.icon;
    case PidRole:
        return app.id;
    case SelectedRole:
        return m_selected.at(index.row());
    case BackgroundRole:
        return app.isBackground;
    default:
        return {};
    }
}

int AppListModel::rowOf(qint32 pid, int from) const {
    for (int row = from; row < m_rows.size(); ++row) {
        if (m_rows.at(row).id == pid) {
            return row;
        }
    }
    return -1;
}

void AppListModel::sync() {
    const QList<AppInfo>& target = m_state.visibleApps();
    QSet<qint32> wanted;
    for (const AppInfo& app : target) {
        wanted.insert(app.id);
    }
    // Rows of apps that left, from the bottom so the indexes stay valid.
    for (int row = static_cast<int>(m_rows.size()) - 1; row >= 0; --row) {
        if (!wanted.contains(m_rows.at(row).id)) {
            beginRemoveRows({}, row, row);
            m_rows.removeAt(row);
            m_selected.removeAt(row);
            endRemoveRows();
        }
    }
    // Walk the wanted order: move or insert each app into place, update the ones that changed.
    for (int row = 0; row < target.size(); ++row) {
        const AppInfo& app = target.at(row);
        const int found = rowOf(app.id, row);
        if (found < 0) {
            beginInsertRows({}, row, row);
            m_rows.insert(row, app);
            m_selected.insert(row, m_state.isSelected(app.id));
            endInsertRows();
            continue;
        }
        if (found != row) {
            beginMoveRows({}, found, found, {}, row);
            m_rows.move(found, row);
            m_selected.move(found, row);
            endMoveRows();
        }
        // Icons are compared only for presence: the workspace may hand out a new copy of the same
        // icon on every refresh, and repainting every row for that would be waste.
        AppInfo& current = m_rows[row];
        const bool selected = m_state.isSelected(app.id);
        const bool differs = current.name != app.name || current.isBackground != app.isBackground ||
                             current.icon.isNull() != app.icon.isNull() ||
                             m_selected.at(row) != selected;
        current = app;
        m_selected[row] = selected;
        if (differs) {
            emit dataChanged(index(row), index(row));
        }
    }
}

} // namespace vantle
