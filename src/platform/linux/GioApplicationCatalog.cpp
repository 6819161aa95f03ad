#include "platform/linux/GioApplicationCatalog.h"

#include <QCollator>
#include <QFile>
#include <QFileInfo>
#include <algorithm>

// GLib names struct members "signals", which Qt defines as a keyword.
#pragma push_macro("signals")
#undef signals
#include <gio/gdesktopappinfo.h>
#pragma pop_macro("signals")

namespace vantle {

namespace {

QString fromUtf8(const char* text) {
    return text ? QString::fromUtf8(text) : QString();
}

ApplicationCatalog::Application describe(GAppInfo* info, QString id) {
    if (id.endsWith(QLatin1String(".desktop"))) {
        id.chop(8);
    }
    ApplicationCatalog::Application app{std::move(id), fromUtf8(g_app_info_get_name(info)), {}};
    if (GIcon* icon = g_app_info_get_icon(info)) {
        gchar* text = g_icon_to_string(icon);
        app.iconName = fromUtf8(text);
        g_free(text);
    }
    return app;
}

} // namespace

QList<ApplicationCatalog::Application> GioApplicationCatalog::installedApplications() {
    QList<Application> apps;
    GList* all = g_app_info_get_all();
    for (GList* node = all; node; node = node->next) {
        auto* info = static_cast<GAppInfo*>(node->data);
        if (G_IS_DESKTOP_APP_INFO(info) && g_app_info_should_show(info)) {
            apps.append(describe(info, fromUtf8(g_app_info_get_id(info))));
        }
    }
    g_list_free_full(all, g_object_unref);
    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(apps.begin(), apps.end(), [&collator](const Application& a, const Application& b) {
        return collator.compare(a.name, b.name) < 0;
    });
    return apps;
}

std::optional<ApplicationCatalog::Application>
GioApplicationCatalog::applicationAt(const QString& path) {
    // Fails for anything that is not a readable entry of Type=Application.
    GDesktopAppInfo* info =
        g_desktop_app_info_new_from_filename(QFile::encodeName(path).constData());
    if (!info) {
        return std::nullopt;
    }
    // An entry outside the XDG folders has no id of its own; its file name is the one it would
    // have once installed.
    QString id = fromUtf8(g_app_info_get_id(G_APP_INFO(info)));
    if (id.isEmpty()) {
        id = QFileInfo(path).fileName();
    }
    Application app = describe(G_APP_INFO(info), id);
    g_object_unref(info);
    return app;
}

} // namespace vantle
