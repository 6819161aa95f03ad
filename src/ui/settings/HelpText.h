#pragma once

#include <QLabel>

namespace vantle {

// A paragraph that explains the control above it: wrapped, and quieter than the control.
class HelpText final : public QLabel {
    Q_OBJECT
public:
    explicit HelpText(const QString& text, QWidget* parent = nullptr);
};

} // namespace vantle
