// Connects the map page in a browser view to the player: sends the track, the vehicle and time marks, and
// brings clicks on the map back as coordinates.
#pragma once

#include "core/TrackPosition.h"
#include "ui/EpochClock.h"
#include "ui/TrackCursor.h"

#include <QDateTime>
#include <QLocale>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <optional>

class MapTileState;
class MapWidgetSharedState;
class QWebChannel;
class QWebEngineView;

// Lives on the user-interface thread. Usage:
//   auto* map = new MapWidgetAdapter(view, this);
//   connect(map, &MapWidgetAdapter::ready, this, [=] { map->setTrack(&positions); });
//   connect(map, &MapWidgetAdapter::coordinatesReceived, controller, &Controller::onCoordinatesFromMap);
// Whatever is sent before ready() is lost: the page is not listening yet.
class MapWidgetAdapter : public QObject {
    Q_OBJECT
public:
    // Loads the map page found beside the program's resources (map/dist/index.html).
    explicit MapWidgetAdapter(QWebEngineView* view, QObject* parent = nullptr);
    // Loads the given page instead.
    MapWidgetAdapter(QWebEngineView* view, const QUrl& page, QObject* parent = nullptr);

    static QUrl defaultPageUrl();

    // Shows a new track (nullptr or empty: none). The track is borrowed: it must stay alive and unchanged
    // until the next setTrack. The page gets a simplified copy; time marks are recomputed.
    void setTrack(const TrackPositions* track);
    // Moves the vehicle to the moment of play; seekedByUser lets the page jump instead of gliding. The position
    // goes to the page at the next turn of the event loop: of several calls in one turn only the latest is
    // sent, marked as a jump if any of them was one.
    void setCurrentTime(const QDateTime& dateTime, bool seekedByUser);
    // Time marks every so many seconds along the track; 0 removes them.
    void setTimeStep(int seconds);
    int timeStep() const { return m_timeStep; }

    MapWidgetSharedState* sharedState() const { return m_sharedState; }
    // The page's tile credit and its notice without tiles ("tiles" on the channel).
    MapTileState* tileState() const { return m_tileState; }

public slots:
    void onPageLoaded(bool ok);
    void onWebChannelInitialized();
    // Call after the interface language has changed (the new translator installed).
    void onLocaleChanged(const QLocale& locale);

signals:
    // The page is connected; send the track and position from now on.
    void ready();
    // A click on the map.
    void coordinatesReceived(double longitude, double latitude);

private:
    struct Position {
        double timestamp;
        double longitude;
        double latitude;
        double direction;
        bool seekedByUser;
    };

    void sendTimeMarks();
    void sendPendingPosition();

    QWebEngineView* m_view;        // borrowed
    QWebChannel* m_webChannel;     // child
    MapWidgetSharedState* m_sharedState; // child
    MapTileState* m_tileState;           // child
    const TrackPositions* m_track = nullptr; // borrowed
    TrackCursor m_cursor;
    int m_timeStep = 0;
    // Sending costs tens of microseconds on the web channel: at most one position goes per event-loop turn.
    std::optional<Position> m_pendingPosition;
    EpochClock m_clock;
    QTimer* m_positionTimer; // child
};
