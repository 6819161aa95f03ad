#pragma once

#include <QString>
#include <QWidget>

class QLabel;

namespace vantle {

class BundleInfo;
struct SettingsContext;

// Who made Vantle, what it does, its version, and an invitation to tip when the build names a
// tip page.
class AboutTab final : public QWidget {
    Q_OBJECT
public:
    explicit AboutTab(const SettingsContext& context, QWidget* parent = nullptr);

    // "Version 1.4 (212)"; the build number only when it differs from the version.
    static QString versionLine(const BundleInfo& bundle);
    // The tip service's name and page, as the build was configured; the box shows only when
    // both are set.
    static QString tipServiceName();
    static QString tipPageAddress();

protected:
    void changeEvent(QEvent* event) override;

private:
    // Symbols and the tip box's fill follow the palette, light or dark.
    void refreshDecoration();

    QLabel* m_icon = nullptr;
    QList<QPair<QLabel*, QString>> m_symbols;
    QWidget* m_tipBox = nullptr;
    bool m_refreshing = false;
};

} // namespace vantle
