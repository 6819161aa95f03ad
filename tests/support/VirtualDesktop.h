#pragma once

#include <QProcess>
#include <QString>
#include <memory>

namespace vantle::testing {

// A private X display (Xvfb) with a real window manager (openbox), for tests that drive real X
// clients. Children started through start() see only this display.
class VirtualDesktop {
public:
    VirtualDesktop();
    ~VirtualDesktop();

    bool isRunning() const { return !m_display.isEmpty(); }
    QString error() const { return m_error; }
    // ":N"
    QString display() const { return m_display; }

    // Points this process's Qt at the display, before the QApplication exists; offscreen when the
    // display did not start, so that the test still runs and can say why.
    void useForThisProcess() const;

    // Starts a program on this display (and the given session bus, if any).
    std::unique_ptr<QProcess> start(const QString& program, const QStringList& arguments = {},
                                    const QString& busAddress = {}) const;

private:
    QProcess m_xvfb;
    QProcess m_windowManager;
    QString m_display;
    QString m_error;
};

} // namespace vantle::testing
