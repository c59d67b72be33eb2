// The application's own icons, compiled into the program as Qt resources.
#pragma once

#include <QIcon>
#include <QString>

// The icon of that name from media/icons without ".svg" (e.g. "play", "volume-muted", "reelvue"); a null icon
// and a WARN in the log for a name that isn't there.
QIcon reelvueIcon(const QString& name);
