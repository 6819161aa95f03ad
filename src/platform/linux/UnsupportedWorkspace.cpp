#include "platform/linux/UnsupportedWorkspace.h"

#include "platform/Log.h"

namespace vantle {

UnsupportedWorkspace::UnsupportedWorkspace(const QString& reason, QObject* parent)
    : Workspace(parent) {
    logLine(QStringLiteral("cannot list running applications: %1. Rules and quit-all have "
                           "nothing to act on in this session")
                .arg(reason));
}

} // namespace vantle
