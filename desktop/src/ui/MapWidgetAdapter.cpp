// The map bridge: web channel set-up, track simplification for the page, the vehicle's position and marks.
#include "ui/MapWidgetAdapter.h"

#include "core/Startup.h"
#include "logging/Logging.h"
#include "ui/MapMessages.h"
#include "ui/MapTileState.h"
#include "ui/MapWidgetSharedState.h"
#include "ui/TimeMarks.h"
#include "ui/TrackSimplifier.h"

#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineView>

namespace {
constexpr const char* kLogger = "ui.MapWidgetAdapter";
} // namespace

MapWidgetAdapter::MapWidgetAdapter(QWebEngineView* view, QObject* parent)
    : MapWidgetAdapter(view, defaultPageUrl(), parent) {}

MapWidgetAdapter::MapWidgetAdapter(QWebEngineView* view, const QUrl& page, QObject* parent)
    : QObject(parent),
      m_view(view),
      m_webChannel(new QWebChannel(this)),
      m_sharedState(new MapWidgetSharedState(this)),
      m_tileState(new MapTileState(this)),
      m_positionTimer(new QTimer(this)) {
    m_positionTimer->setSingleShot(true);
    m_positionTimer->setInterval(0);
    connect(m_positionTimer, &QTimer::timeout, this, &MapWidgetAdapter::sendPendingPosition);

    QWebEnginePage* webPage = m_view->page();
    webPage->setWebChannel(m_webChannel);
    connect(webPage, &QWebEnginePage::featurePermissionRequested, this,
            [webPage](const QUrl& origin, QWebEnginePage::Feature feature) {
                if (feature != QWebEnginePage::Geolocation)
                    return;
                LOG_INFO(kLogger, "Grant geolocation permission!");
                webPage->setFeaturePermission(origin, feature, QWebEnginePage::PermissionGrantedByUser);
            });

    connect(m_sharedState, &MapWidgetSharedState::initialized, this, &MapWidgetAdapter::onWebChannelInitialized);
    connect(m_sharedState, &MapWidgetSharedState::coordinatesReceived, this, &MapWidgetAdapter::coordinatesReceived);
    m_webChannel->registerObject(QStringLiteral("sharedState"), m_sharedState);
    m_webChannel->registerObject(QStringLiteral("tiles"), m_tileState);

    connect(m_view, &QWebEngineView::loadFinished, this, &MapWidgetAdapter::onPageLoaded);
    m_view->load(page);
}

QUrl MapWidgetAdapter::defaultPageUrl() {
    return QUrl::fromLocalFile(resourceDirectory().absoluteFilePath(QStringLiteral("map/dist/index.html")));
}

void MapWidgetAdapter::onPageLoaded(bool ok) {
    if (ok)
        LOG_INFO(kLogger, "Map widget loaded");
    else
        LOG_ERROR(kLogger, "Failed to load map page");
}

void MapWidgetAdapter::onWebChannelInitialized() {
    LOG_INFO(kLogger, "Web channel initialized");
    emit ready();
}

void MapWidgetAdapter::onLocaleChanged(const QLocale& locale) {
    emit m_sharedState->localeChanged(locale.name(), mapZoomInText(), mapZoomOutText());
    m_tileState->retranslate();
}

void MapWidgetAdapter::setTrack(const TrackPositions* track) {
    m_track = track;
    m_cursor.reset(track);
    m_pendingPosition.reset(); // it belongs to the previous track
    const TrackPositions simplified = track ? TrackSimplifier::simplify(*track) : TrackPositions();
    LOG_TRACE(kLogger, "Track size {}", simplified.size());
    emit m_sharedState->trackChanged(trackDocument(simplified));
    sendTimeMarks();
}

void MapWidgetAdapter::setCurrentTime(const QDateTime& dateTime, bool seekedByUser) {
    if (!m_track || m_track->empty())
        return;
    if (!dateTime.isValid()) {
        LOG_WARN(kLogger, "setCurrentTime() has been called with an invalid date-time");
        return;
    }
    const double t = static_cast<double>(m_clock.millisecondsOf(dateTime)) / 1000.0;
    const MapPoint point = m_cursor.pointAt(t);
    // The last fix is a resting place, not a jump.
    const bool jumped = m_cursor.atLast() ? false : seekedByUser;
    const bool earlierJump = m_pendingPosition && m_pendingPosition->seekedByUser;
    m_pendingPosition = Position{t, point.longitude, point.latitude, point.heading.value_or(0.0), jumped || earlierJump};
    if (!m_positionTimer->isActive())
        m_positionTimer->start();
}

void MapWidgetAdapter::sendPendingPosition() {
    if (!m_pendingPosition)
        return;
    const Position position = *m_pendingPosition;
    m_pendingPosition.reset();
    emit m_sharedState->positionChanged(position.timestamp, position.longitude, position.latitude, position.direction,
                                        position.seekedByUser);
}

void MapWidgetAdapter::setTimeStep(int seconds) {
    m_timeStep = seconds;
    sendTimeMarks();
}

void MapWidgetAdapter::sendTimeMarks() {
    const std::vector<MapPoint> marks = m_track ? timeMarksAlong(*m_track, m_timeStep) : std::vector<MapPoint>();
    emit m_sharedState->timeStepsChanged(timeMarksDocument(marks));
}
