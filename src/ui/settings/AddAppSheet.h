#pragma once

#include <QDialog>

namespace vantle {

class AutoQuitTabState;

// "Add App to Watch": the running apps no rule names yet; choosing one adds a rule for it.
class AddAppSheet final : public QDialog {
    Q_OBJECT
public:
    AddAppSheet(AutoQuitTabState& state, QWidget* parent = nullptr);
};

} // namespace vantle
