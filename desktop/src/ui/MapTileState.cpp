// The page's "tiles" object.
#include "ui/MapTileState.h"

#include "ui/TileSchemeHandler.h"

#include <QCoreApplication>

MapTileState::MapTileState(QObject* parent)
    : QObject(parent), m_attribution(TileSchemeHandler::serverAttribution()) {}

QString MapTileState::urlTemplate() const {
    return TileSchemeHandler::urlTemplate();
}

QString MapTileState::noTilesText() const {
    return QCoreApplication::translate("MapWidget", "No map tiles available here: connect to the network or add an "
                                                    "offline map (View menu)");
}

void MapTileState::setSources(const QString& attribution) {
    m_attribution = attribution;
    emit sourcesChanged(attribution);
}

void MapTileState::retranslate() {
    emit noTilesTextChanged(noTilesText());
}
