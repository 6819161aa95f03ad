#include "fakes/FakeBundleInfo.h"
#include "fakes/LogCapture.h"
#include "fakes/ManualClock.h"
#include "fakes/MemoryDefaultsStore.h"
#include "model/AppSettings.h"
#include "model/ProductTexts.h"
#include "ui/settings/SettingsBinding.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QMetaProperty>
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

// Seconds shown as tenths of a minute: a conversion each way that is not its own inverse.
const BindingConversion kSecondsAsTenthMinutes{
    [](const QVariant& seconds) { return QVariant(seconds.toDouble() / 6); },
    [](const QVariant& tenths) { return QVariant(tenths.toDouble() * 6); }};

QWidget* makeControl(const QString& kind) {
    if (kind == u"check box"_s) {
        return new QCheckBox;
    }
    if (kind == u"slider"_s) {
        auto* slider = new QSlider;
        slider->setRange(5, 180);
        slider->setSingleStep(5);
        return slider;
    }
    if (kind == u"combo box"_s) {
        auto* combo = new QComboBox;
        combo->addItem(u"Notification"_s, u"notification"_s);
        combo->addItem(u"Floating window"_s, u"window"_s);
        combo->addItem(u"No warning"_s, u"never"_s);
        return combo;
    }
    return new QDoubleSpinBox;
}

} // namespace

class TestSettingsBinding : public QObject {
    Q_OBJECT

    std::unique_ptr<MemoryDefaultsStore> store;
    FakeBundleInfo bundle;
    ManualClock clock;

    std::unique_ptr<AppSettings> make() {
        return std::make_unique<AppSettings>(*store, bundle, clock, ProductTexts::linuxDesktop());
    }

private slots:
    void init() { store = std::make_unique<MemoryDefaultsStore>(); }

    // Each control shows the stored value, follows a change made elsewhere without echoing it
    // back, and stores a user's change at once. `shown` is the control's user property.
    void bindsBothWays_data() {
        QTest::addColumn<QString>("property");
        QTest::addColumn<QVariantList>("stored"); // before binding, later from elsewhere
        QTest::addColumn<QVariantList>("shown");  // what the control shows for each
        QTest::addColumn<int>("key");
        QTest::addColumn<QVariant>("storedAfterUser");
        QTest::newRow("check box")
            << u"idleQuitEnabled"_s << QVariantList{true, false} << QVariantList{true, false}
            << int(Qt::Key_Space) << QVariant(true);
        QTest::newRow("slider") << u"idleQuitTimeout"_s << QVariantList{30.0, 60.0}
                                << QVariantList{30, 60} << int(Qt::Key_Up) << QVariant(65.0);
        QTest::newRow("combo box")
            << u"quitWarningStyle"_s << QVariantList{u"never"_s, u"notification"_s}
            << QVariantList{u"No warning"_s, u"Notification"_s} << int(Qt::Key_Down)
            << QVariant(u"window"_s);
        QTest::newRow("spin box") << u"scheduleWarningSeconds"_s << QVariantList{30.0, 45.0}
                                  << QVariantList{5.0, 7.5} << int(Qt::Key_Up) << QVariant(51.0);
    }
    void bindsBothWays() {
        QFETCH(QString, property);
        QFETCH(QVariantList, stored);
        QFETCH(QVariantList, shown);
        QFETCH(int, key);
        QFETCH(QVariant, storedAfterUser);
        const QByteArray name = property.toLatin1();
        const auto settings = make();
        QVERIFY(settings->setProperty(name.constData(), stored[0]));
        std::unique_ptr<QWidget> control(makeControl(QString::fromLatin1(QTest::currentDataTag())));
        control->setObjectName(property);
        const bool converted = property == u"scheduleWarningSeconds"_s;
        QVERIFY(bindSetting(control.get(), *settings,
                            converted ? kSecondsAsTenthMinutes : BindingConversion{}));
        const auto shownNow = [&] {
            return control->metaObject()->userProperty().read(control.get());
        };
        QCOMPARE(shownNow(), shown[0]);

        // A change from elsewhere (the tray, a second window) shows without being written back
        // as if the user had made it.
        const QMetaObject* meta = settings->metaObject();
        const QMetaMethod notify = meta->property(meta->indexOfProperty(name)).notifySignal();
        QSignalSpy changed(settings.get(), ("2" + notify.methodSignature()).constData());
        QVERIFY(settings->setProperty(name.constData(), stored[1]));
        QCOMPARE(shownNow(), shown[1]);
        QCOMPARE(changed.count(), 1);

        QTest::keyClick(control.get(), Qt::Key(key));
        QCOMPARE(settings->property(name.constData()), storedAfterUser);
        QCOMPARE(changed.count(), 2);
        // The change is on its way to disk at once, not on close.
        QVERIFY(store->values.contains(property));
    }

    // One call binds every named control under a page; unnamed and unrelated controls are left
    // alone, and a control that cannot show its setting says so.
    void bindsAPage() {
        const auto settings = make();
        QWidget page;
        auto* toggle = new QCheckBox(&page);
        toggle->setObjectName(u"showBackgroundApps"_s);
        auto* slider = new QSlider(&page);
        slider->setObjectName(u"idleQuitTimeout"_s);
        slider->setRange(5, 180);
        new QCheckBox(&page); // unnamed
        auto* other = new QLineEdit(&page);
        other->setObjectName(u"search"_s);
        QCOMPARE(bindSettings(&page, *settings), 2);
        QCOMPARE(slider->value(), 30);
        toggle->click();
        QCOMPARE(settings->showBackgroundApps(), toggle->isChecked());

        LogCapture log;
        QWidget wrongKind;
        wrongKind.setObjectName(u"idleQuitEnabled"_s);
        QVERIFY(!bindSetting(&wrongKind, *settings));
        QCOMPARE(log.count(u"cannot show a setting"_s), 1);
    }
};

QTEST_MAIN(TestSettingsBinding)
#include "tst_settingsbinding.moc"
