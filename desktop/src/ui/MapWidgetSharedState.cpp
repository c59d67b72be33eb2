// The web channel's endpoint for the map page.
#include "ui/MapWidgetSharedState.h"

#include "ui/NationCapitals.h"

#include <QCoreApplication>
#include <QLocale>

QString mapZoomInText() {
    return QCoreApplication::translate("MapWidget", "Zoom in");
}

QString mapZoomOutText() {
    return QCoreApplication::translate("MapWidget", "Zoom out");
}

MapWidgetSharedState::MapWidgetSharedState(QObject* parent) : QObject(parent) {}

QVariantMap MapWidgetSharedState::settings() const {
    const Capital capital = capitalOfUserCountry();
    return {
        {QStringLiteral("language"), QLocale::system().name().left(2)},
        {QStringLiteral("capital"),
         QVariantMap{{QStringLiteral("latitude"), capital.latitude}, {QStringLiteral("longitude"), capital.longitude}}},
        {QStringLiteral("text"),
         QVariantMap{{QStringLiteral("zoomIn"), mapZoomInText()}, {QStringLiteral("zoomOut"), mapZoomOutText()}}},
    };
}

void MapWidgetSharedState::init() {
    emit initialized();
}

void MapWidgetSharedState::onCoordinates(double longitude, double latitude) {
    emit coordinatesReceived(longitude, latitude);
}
