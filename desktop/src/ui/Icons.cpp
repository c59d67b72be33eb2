// The application's own icons, compiled into the program as Qt resources.
#include "ui/Icons.h"

#include "logging/Logging.h"

#include <QFile>

namespace {
constexpr const char* kLogger = "ui.Icons";
}

// The resources live in a static library, so nothing registers them until this runs; outside any namespace
// as Q_INIT_RESOURCE requires.
static void initIconResources() { Q_INIT_RESOURCE(icons); }

QIcon reelvueIcon(const QString& name) {
    static const bool initialised = (initIconResources(), true);
    (void)initialised;
    const QString path = QStringLiteral(":/icons/") + name + QStringLiteral(".svg");
    if (!QFile::exists(path)) {
        LOG_WARN(kLogger, "No icon named {}", name.toStdString());
        return QIcon();
    }
    return QIcon(path);
}
