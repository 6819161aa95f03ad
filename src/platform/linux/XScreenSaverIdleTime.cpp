#include "platform/linux/XScreenSaverIdleTime.h"

#include "platform/Log.h"
#include "platform/linux/X11Connection.h"

#include <cstdlib>
#include <xcb/screensaver.h>

namespace vantle {

XScreenSaverIdleTime::XScreenSaverIdleTime(X11Connection& connection)
    : m_x(connection) {
    const xcb_query_extension_reply_t* extension =
        xcb_get_extension_data(m_x.connection(), &xcb_screensaver_id);
    m_present = extension && extension->present;
    if (!m_present) {
        logLine(QStringLiteral("the X server has no MIT-SCREEN-SAVER extension; system idle time "
                               "is unknown, so the idle sweep never fires"));
    }
}

std::optional<double> XScreenSaverIdleTime::secondsSinceLastInput() {
    if (!m_present) {
        return std::nullopt;
    }
    xcb_connection_t* c = m_x.connection();
    xcb_screensaver_query_info_reply_t* reply =
        xcb_screensaver_query_info_reply(c, xcb_screensaver_query_info(c, m_x.root()), nullptr);
    if (!reply) {
        return std::nullopt;
    }
    const double seconds = reply->ms_since_user_input / 1000.0;
    std::free(reply);
    return seconds;
}

} // namespace vantle
