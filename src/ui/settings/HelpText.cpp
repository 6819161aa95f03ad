#include "ui/settings/HelpText.h"

namespace vantle {

HelpText::HelpText(const QString& text, QWidget* parent)
    : QLabel(text, parent) {
    setWordWrap(true);
    setTextFormat(Qt::PlainText);
    QFont smaller = font();
    smaller.setPointSizeF(smaller.pointSizeF() * 0.9);
    setFont(smaller);
    setForegroundRole(QPalette::PlaceholderText);
}

} // namespace vantle
