#pragma once

#include <QHash>
#include <QString>
#include <QVariant>
#include <functional>

class QWidget;

namespace vantle {

class AppSettings;

// How a stored value appears in a control and back, for settings whose control shows them
// differently (seconds shown as minutes, a raw style name picked from a list).
struct BindingConversion {
    std::function<QVariant(const QVariant& stored)> toControl;
    std::function<QVariant(const QVariant& shown)> toSetting;
};

// Ties `control` to the AppSettings property named by its object name, both ways: the control
// shows the current value and follows every later change, and each user change is written at
// once. Check boxes and switches (checked), sliders and spin boxes (value), line edits (text) and
// combo boxes (the current item's data, else its text) are understood. Returns false, with a log
// line, when the name is not a property or the control is not one of those.
bool bindSetting(QWidget* control, AppSettings& settings, BindingConversion conversion = {});

// Binds every descendant of `root` whose object name is an AppSettings property, with the
// conversion given for its name if any. Returns how many were bound.
int bindSettings(QWidget* root, AppSettings& settings,
                 const QHash<QString, BindingConversion>& conversions = {});

} // namespace vantle
