#include "fakes/AppListFixture.h"
#include "ui/applist/AppListModel.h"
#include "ui/applist/AppListView.h"
#include "ui/applist/AppRowDelegate.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QSignalSpy>
#include <QStackedWidget>
#include <QTest>

using namespace vantle;
using namespace Qt::StringLiterals;

// The app list's widgets, driven as a user would: by keys and clicks.
class TestAppListView : public QObject {
    Q_OBJECT

    std::unique_ptr<AppListFixture> f;
    std::unique_ptr<AppListView> view;

    template <typename T>
    T* child(const char* name) const {
        T* widget = view->findChild<T*>(QLatin1String(name));
        if (!widget) {
            qFatal("no child %s", name);
        }
        return widget;
    }
    QListView* list() const { return child<QListView>("apps"); }
    QString count() const { return child<QLabel>("count")->text(); }
    QString page() const {
        return view->findChild<QStackedWidget*>()->currentWidget()->objectName();
    }
    void show() {
        view->show();
        QVERIFY(QTest::qWaitForWindowExposed(view.get()));
        view->activateWindow();
        QTRY_VERIFY(view->isActiveWindow());
    }
    QPoint rowPoint(int row, bool quitButton) const {
        const QRect rect = list()->visualRect(list()->model()->index(row, 0));
        return quitButton ? AppRowDelegate::quitRect(rect).center() : rect.center();
    }

private slots:
    void init() {
        f = std::make_unique<AppListFixture>();
        view = std::make_unique<AppListView>(f->state, nullptr);
    }
    void cleanup() {
        view.reset();
        f.reset();
    }

    void keyboardDrivesTheList() {
        auto safari = f->launch(10, u"Safari"_s);
        auto files = f->launch(11, u"Files"_s);
        show();
        auto* search = child<QLineEdit>("search");
        QCOMPARE(search->placeholderText(), u"Search apps (Ctrl+F)"_s);
        QVERIFY(!view->findChild<QWidget*>(u"settings"_s)); // no settings window yet

        list()->setFocus();
        QTest::keyClick(view.get(), Qt::Key_F, Qt::ControlModifier);
        QTRY_VERIFY(search->hasFocus());
        QTest::keyClicks(search, u"saf"_s);
        QCOMPARE(list()->model()->rowCount(), 1);
        QCOMPARE(count(), u"1 / 1"_s);

        QTest::keyClick(view.get(), Qt::Key_A, Qt::ShiftModifier | Qt::ControlModifier);
        QCOMPARE(count(), u"0 / 1"_s);
        QVERIFY(!child<QPushButton>("quitSelected")->isEnabled());
        QTest::keyClick(view.get(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(safari->terminateRequests, 0);

        QTest::keyClick(view.get(), Qt::Key_A, Qt::ShiftModifier | Qt::ControlModifier);
        QTest::keyClick(view.get(), Qt::Key_Enter, Qt::ControlModifier);
        QCOMPARE(safari->terminateRequests, 1);
        QCOMPARE(files->terminateRequests, 0);
    }

    void rowsTickAndQuitByClick() {
        auto mail = f->launch(10, u"Mail"_s);
        f->launch(11, u"Notes"_s);
        show();
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, rowPoint(0, false));
        QVERIFY(!f->state.isSelected(10));
        QCOMPARE(count(), u"1 / 2"_s);
        QVERIFY(!child<QCheckBox>("selectAll")->isChecked());
        // Space on the current row ticks it again.
        list()->setFocus();
        list()->setCurrentIndex(list()->model()->index(0, 0));
        QTest::keyClick(list(), Qt::Key_Space);
        QVERIFY(f->state.isSelected(10));

        QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, rowPoint(0, true));
        QCOMPARE(mail->terminateRequests, 1);
    }

    void emptyStates() {
        show();
        QCOMPARE(page(), u"empty"_s);
        QCOMPARE(child<QLabel>("emptyText")->text(), u"Loading…"_s);
        QCOMPARE(count(), u"0 / 0"_s);
        QVERIFY(!child<QCheckBox>("selectAll")->isChecked());
        QVERIFY(!child<QPushButton>("quitSelected")->isEnabled());
        f->launch(10, u"Mail"_s);
        QCOMPARE(page(), u"apps"_s);
        QTest::keyClicks(child<QLineEdit>("search"), u"zz"_s);
        QCOMPARE(page(), u"empty"_s);
        QCOMPARE(child<QLabel>("emptyText")->text(), u"No apps match"_s);
    }

    void forceQuitIsConfirmedInPlace() {
        auto mail = f->launch(10, u"Mail"_s);
        show();
        child<QCheckBox>("forceMode")->click();
        auto* quit = child<QPushButton>("quitSelected");
        QCOMPARE(quit->text(), u"Force Quit"_s);

        QTest::keyClick(view.get(), Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(page(), u"forceQuitConfirmation"_s);
        QCOMPARE(child<QLabel>("confirmTitle")->text(), u"Force quit Mail?"_s);
        QVERIFY(!quit->isEnabled());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        QCOMPARE(page(), u"apps"_s);
        QCOMPARE(mail->forceRequests, 0);

        quit->click();
        child<QPushButton>("confirmForceQuit")->click();
        QCOMPARE(mail->forceRequests, 1);
        QCOMPARE(mail->terminateRequests, 0);
    }

    // The monitor refreshes on every focus change; rows must follow by pid, not be rebuilt.
    void rowsFollowAppsByPid() {
        f->launch(10, u"Mail"_s);
        f->launch(12, u"Terminal"_s);
        auto* model = qobject_cast<AppListModel*>(list()->model());
        QSignalSpy inserted(model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy changed(model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(model, &QAbstractItemModel::modelReset);

        f->monitor.refresh();
        QCOMPARE(changed.count() + inserted.count() + removed.count(), 0);
        f->launch(11, u"Notes"_s);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.constFirst().at(1).toInt(), 1); // sorted between Mail and Terminal
        f->exit(10);
        QCOMPARE(removed.count(), 1);
        f->state.setSelected(12, false);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(model->data(model->index(1), AppListModel::SelectedRole).toBool(), false);
        QCOMPARE(reset.count(), 0);
        QStringList rows;
        for (int row = 0; row < model->rowCount(); ++row) {
            rows << model->data(model->index(row), Qt::DisplayRole).toString();
        }
        QCOMPARE(rows, f->visibleNames());
    }
};

QTEST_MAIN(TestAppListView)
#include "tst_applistview.moc"
