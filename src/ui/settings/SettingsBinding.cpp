#include "ui/settings/SettingsBinding.h"

#include "model/AppSettings.h"
#include "platform/Log.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMetaProperty>
#include <QSignalBlocker>
#include <optional>
#include <utility>

namespace vantle {

namespace {

// One per bound control, owned by it. The property and the control's own value are reached
// through the meta-object, so the connections are made by QMetaMethod: the signals differ per
// property and per control type and are only known at run time.
class SettingBinder final : public QObject {
    Q_OBJECT
public:
    SettingBinder(QWidget* control, AppSettings& settings, QMetaProperty setting,
                  QMetaProperty shown, BindingConversion conversion)
        : QObject(control)
        , m_control(control)
        , m_settings(settings)
        , m_setting(setting)
        , m_shown(shown)
        , m_conversion(std::move(conversion)) {}

public slots:
    void showSetting() {
        QVariant value = m_setting.read(&m_settings);
        if (m_conversion.toControl) {
            value = m_conversion.toControl(value);
        }
        const QSignalBlocker quiet(m_control);
        if (auto* combo = qobject_cast<QComboBox*>(m_control)) {
            int index = combo->findData(value);
            if (index < 0) {
                index = combo->findText(value.toString());
            }
            combo->setCurrentIndex(index);
            return;
        }
        m_shown.write(m_control, value);
    }

    void storeControl() {
        QVariant value;
        if (auto* combo = qobject_cast<QComboBox*>(m_control)) {
            value = combo->currentData();
            if (!value.isValid()) {
                value = combo->currentText();
            }
        } else {
            value = m_shown.read(m_control);
        }
        if (m_conversion.toSetting) {
            value = m_conversion.toSetting(value);
        }
        // AppSettings ignores a value equal to the one it holds, so echoes end here.
        m_setting.write(&m_settings, value);
    }

private:
    QWidget* m_control;
    AppSettings& m_settings;
    QMetaProperty m_setting;
    QMetaProperty m_shown;
    BindingConversion m_conversion;
};

// The control's value property and the signal that reports a user change of it.
std::optional<std::pair<QMetaProperty, QMetaMethod>> shownValue(QWidget* control) {
    const QMetaObject* meta = control->metaObject();
    const auto property = [meta](const char* name) {
        return meta->property(meta->indexOfProperty(name));
    };
    const auto signal = [meta](const char* signature) {
        return meta->method(meta->indexOfSignal(signature));
    };
    if (qobject_cast<QComboBox*>(control)) {
        return std::pair{property("currentIndex"), signal("currentIndexChanged(int)")};
    }
    if (qobject_cast<QAbstractButton*>(control)) {
        return std::pair{property("checked"), signal("toggled(bool)")};
    }
    if (qobject_cast<QAbstractSlider*>(control)) {
        return std::pair{property("value"), signal("valueChanged(int)")};
    }
    if (qobject_cast<QAbstractSpinBox*>(control)) {
        const QMetaProperty value = property("value");
        return std::pair{value, value.notifySignal()};
    }
    if (qobject_cast<QLineEdit*>(control)) {
        return std::pair{property("text"), signal("textEdited(QString)")};
    }
    return std::nullopt;
}

} // namespace

bool bindSetting(QWidget* control, AppSettings& settings, BindingConversion conversion) {
    const QByteArray name = control->objectName().toLatin1();
    const int index = settings.metaObject()->indexOfProperty(name.constData());
    const auto shown = shownValue(control);
    if (index < 0 || !shown) {
        logLine(QStringLiteral("a %1 named \"%2\" cannot show a setting")
                    .arg(QLatin1String(control->metaObject()->className()), control->objectName()));
        return false;
    }
    const QMetaProperty setting = settings.metaObject()->property(index);
    auto* binder =
        new SettingBinder(control, settings, setting, shown->first, std::move(conversion));
    const QMetaObject* binderMeta = binder->metaObject();
    QObject::connect(&settings, setting.notifySignal(), binder,
                     binderMeta->method(binderMeta->indexOfSlot("showSetting()")));
    QObject::connect(control, shown->second, binder,
                     binderMeta->method(binderMeta->indexOfSlot("storeControl()")));
    binder->showSetting();
    return true;
}

int bindSettings(QWidget* root, AppSettings& settings,
                 const QHash<QString, BindingConversion>& conversions) {
    int bound = 0;
    for (QWidget* child : root->findChildren<QWidget*>()) {
        if (!child->objectName().isEmpty() &&
            settings.metaObject()->indexOfProperty(child->objectName().toLatin1().constData()) >=
                0) {
            bound += bindSetting(child, settings, conversions.value(child->objectName())) ? 1 : 0;
        }
    }
    return bound;
}

} // namespace vantle

#include "SettingsBinding.moc"
