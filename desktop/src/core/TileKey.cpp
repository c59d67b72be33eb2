// Reading a tile address out of a request's path.
#include "core/TileKey.h"

#include <QStringList>

std::optional<TileKey> TileKey::fromPath(const QString& path) {
    QString text = path;
    while (text.startsWith(QLatin1Char('/')))
        text.remove(0, 1);
    const QStringList parts = text.split(QLatin1Char('/'));
    if (parts.size() != 3)
        return std::nullopt;
    const QString row = parts[2].section(QLatin1Char('.'), 0, 0);
    bool zOk = false, xOk = false, yOk = false;
    const TileKey key{parts[0].toInt(&zOk), parts[1].toInt(&xOk), row.toInt(&yOk)};
    if (!zOk || !xOk || !yOk || !key.isValid())
        return std::nullopt;
    return key;
}
