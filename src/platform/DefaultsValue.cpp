#include "platform/DefaultsValue.h"

namespace vantle {

bool DefaultsValue::toBool() const {
    if (const bool* b = get<bool>()) {
        return *b;
    }
    if (const double* d = get<double>()) {
        return *d != 0.0;
    }
    if (const QString* s = get<QString>()) {
        const QString t = s->trimmed();
        if (t.compare(QLatin1String("yes"), Qt::CaseInsensitive) == 0 ||
            t.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0) {
            return true;
        }
        bool ok = false;
        const double d = t.toDouble(&ok);
        return ok && d != 0.0;
    }
    return false;
}

double DefaultsValue::toDouble() const {
    if (const double* d = get<double>()) {
        return *d;
    }
    if (const bool* b = get<bool>()) {
        return *b ? 1.0 : 0.0;
    }
    if (const QString* s = get<QString>()) {
        bool ok = false;
        const double d = s->trimmed().toDouble(&ok);
        return ok ? d : 0.0;
    }
    return 0.0;
}

std::optional<QString> DefaultsValue::toString() const {
    if (const QString* s = get<QString>()) {
        return *s;
    }
    if (const double* d = get<double>()) {
        return QString::number(*d, 'g', 17);
    }
    return std::nullopt;
}

std::optional<bool> DefaultsValue::asStrictBool() const {
    if (const bool* b = get<bool>()) {
        return *b;
    }
    if (const double* d = get<double>()) {
        if (*d == 0.0 || *d == 1.0) {
            return *d == 1.0;
        }
    }
    return std::nullopt;
}

} // namespace vantle
