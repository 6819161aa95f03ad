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
#include <QSignalSpy>
#include <QSlider>
#include <QTest>
#include <functional>
#include <memory>

using namespace vantle;
using namespace Qt::StringLiterals;

namespace {

// One kind of control: how it is made, what it shows, and how a user changes it.
struct ControlCase {
    const char* name;
    const char* property;
    std::function<QWidget*()> make;
    std::function<QVariant(QWidget*)> shown;
    std::function<void(QWidget*)> userChange;
    QVariant storedBefore; // written to the settings before the control is bound
    QVariant shownBefore;  // what the control then shows
    QVariant storedLater;  // a later change of the setting from elsewhere
    QVariant shownLater;   // what the control then shows
    QVariant storedAfterUser;
    BindingConversion conversion;
};

QComboBox* styleCombo() {
    auto* combo = new QComboBox;
    combo->addItem(u"Notification"_s, u"notification"_s);
    combo->addItem(u"Floating window"_s, u"window"_s);
    combo->addItem(u"No warning"_s, u"never"_s);
    return combo;
}

// Seconds shown as tenths of a minute: a conversion each way that is not its own inverse.
const BindingConversion kSecondsAsTenthMinutes{
    [](const QVariant& seconds) { return QVariant(seconds.toDouble() / 6); },
    [](const QVariant& tenths) { return QVariant(tenths.toDouble() * 6); }};

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
    // back, and stores a user's change at once.
    void bindsBothWays() {
        const QList<ControlCase> cases{
            {"check box",
             "idleQuitEnabled",
             [] { return new QCheckBox; },
             [](QWidget* w) { return QVariant(static_cast<QCheckBox*>(w)->isChecked()); },
             [](QWidget* w) { static_cast<QCheckBox*>(w)->click(); },
             true,
             true,
             false,
             false,
             true,
             {}},
            {"slider",
             "idleQuitTimeout",
             [] {
                 auto* slider = new QSlider;
                 slider->setRange(5, 180);
                 slider->setSingleStep(5);
                 return slider;
             },
             [](QWidget* w) { return QVariant(static_cast<QSlider*>(w)->value()); },
             [](QWidget* w) {
                 static_cast<QSlider*>(w)->triggerAction(QAbstractSlider::SliderSingleStepAdd);
             },
             30.0,
             30,
             60.0,
             60,
             65.0,
             {}},
            {"combo box by item data",
             "quitWarningStyle",
             [] { return styleCombo(); },
             [](QWidget* w) { return QVariant(static_cast<QComboBox*>(w)->currentData()); },
             [](QWidget* w) { static_cast<QComboBox*>(w)->setCurrentIndex(2); },
             u"window"_s,
             u"window"_s,
             u"notification"_s,
             u"notification"_s,
             u"never"_s,
             {}},
            {"spin box with a conversion",
             "scheduleWarningSeconds",
             [] { return new QDoubleSpinBox; },
             [](QWidget* w) { return QVariant(static_cast<QDoubleSpinBox*>(w)->value()); },
             [](QWidget* w) { static_cast<QDoubleSpinBox*>(w)->stepUp(); },
             30.0,
             5.0,
             45.0,
             7.5,
             51.0,
             kSecondsAsTenthMinutes},
        };
        for (const ControlCase& c : cases) {
            init();
            const auto settings = make();
            QVERIFY(settings->setProperty(c.property, c.storedBefore));
            std::unique_ptr<QWidget> control(c.make());
            control->setObjectName(QLatin1String(c.property));
            QVERIFY2(bindSetting(control.get(), *settings, c.conversion), c.name);
            QVERIFY2(c.shown(control.get()) == c.shownBefore, c.name);

            // A change from elsewhere (the tray, a second window) shows without being written
            // back as if the user had made it.
            const QByteArray notify =
                settings->metaObject()
                    ->property(settings->metaObject()->indexOfProperty(c.property))
                    .notifySignal()
                    .methodSignature();
            QSignalSpy changed(settings.get(), ("2" + notify).constData());
            QVERIFY(settings->setProperty(c.property, c.storedLater));
            QVERIFY2(c.shown(control.get()) == c.shownLater, c.name);
            QCOMPARE(changed.count(), 1);

            c.userChange(control.get());
            QVERIFY2(settings->property(c.property) == c.storedAfterUser,
                     qPrintable(u"%1: %2"_s.arg(QLatin1String(c.name),
                                                settings->property(c.property).toString())));
            QCOMPARE(changed.count(), 2);
            // The change is on its way to disk at once, not on close.
            QVERIFY2(store->values.contains(QLatin1String(c.property)), c.name);
        }
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
