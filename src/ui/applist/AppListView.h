#pragma once

#include <QWidget>
#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListView;
class QPushButton;
class QStackedWidget;
class QToolButton;

namespace vantle {

class AppListModel;
class AppListState;

// The app list: search, select all, the rows, force-quit mode, the count and the main button,
// with the force-quit confirmation shown in place (a separate dialog would close a popup).
// Everything it shows comes from the AppListState; it only draws and forwards.
class AppListView final : public QWidget {
    Q_OBJECT
public:
    // `onOpenSettings` may be empty: then there is no settings button.
    AppListView(AppListState& state, std::function<void()> onOpenSettings,
                QWidget* parent = nullptr);

    void focusSearch();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void sync();
    void applyColors();
    void fitHeight();

    AppListState& m_state;
    AppListModel* m_model;
    QLineEdit* m_search;
    QCheckBox* m_selectAll;
    QToolButton* m_settings = nullptr;
    QStackedWidget* m_pages;
    QListView* m_list;
    QLabel* m_emptyIcon;
    QLabel* m_emptyText;
    QLabel* m_confirmTitle;
    QPushButton* m_confirmButton;
    QCheckBox* m_forceMode;
    QLabel* m_count;
    QPushButton* m_quit;
    bool m_colorsForForce = false;
};

} // namespace vantle
