// The object the map page sees on the web channel as "sharedState": signals to the page, calls from it.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

// Lives on the user-interface thread; the web channel delivers the page's calls there. The order of the
// members below is the page's protocol: keep it.
class MapWidgetSharedState : public QObject {
    Q_OBJECT
    Q_PROPERTY(QVariantMap settings READ settings CONSTANT)
public:
    explicit MapWidgetSharedState(QObject* parent = nullptr);

    // {"language": "en", "capital": {"latitude", "longitude"}, "text": {"zoomIn", "zoomOut"}}, read by the page
    // when it starts: the system locale's language and the capital of the user's country.
    QVariantMap settings() const;

signals:
    void initialized();
    // JSON text (see MapMessages.h): {"positions": [{"coordinates": {"longitude", "latitude"}, "captured": seconds,
    // "speed": km/h}, ...]}
    void trackChanged(const QString& track);
    void positionChanged(double timestamp, double longitude, double latitude, double direction, bool seekedByUser);
    // JSON text: [{"coordinates": {"longitude", "latitude"}, "angle": degrees, "captured": seconds}, ...]; the page
    // knows the parameter by the name "postions".
    void timeStepsChanged(const QString& postions);
    void coordinatesReceived(double longitude, double latitude);
    void localeChanged(const QString& locale, const QString& zoomInText, const QString& zoomOutText);

public:
    // The page calls this once its channel is ready.
    Q_INVOKABLE void init();
    // The page calls this when the map is clicked.
    Q_INVOKABLE void onCoordinates(double longitude, double latitude);
};

// The map's button texts in the current translation (context "MapWidget").
QString mapZoomInText();
QString mapZoomOutText();
