// The map bridge: web channel set-up, track simplification for the page, the vehicle's position and marks.
#include "ui/MapWidgetAdapter.h"

#include "core/Startup.h"
#include "logging/Logging.h"
#include "ui/MapWidgetSharedState.h"
#include "ui/TimeMarks.h"
#include "ui/TrackSimplifier.h"

#include <QWebChannel>
#include <QWebEnginePage>
#include <QWebEngineView>

namespace {
constexpr const char* kLogger = "ui.MapWidgetAdapter";

QVariantMap coordinatesOf(double longitude, double latitude) {
    return {{QStringLiteral("longitude"), longitude}, {QStringLiteral("latitude"), latitude}};
}

QVariantMap trackMessage(const TrackPositions& simplified) {
    QVariantList positions;
    positions.reserve(static_cast<int>(simplified.size()));
    for (const TrackPosition& position : simplified) {
        positions.append(QVariantMap{
            {QStringLiteral("coordinates"), coordinatesOf(position.longitude, position.latitude)},
            {QStringLiteral("captured"), static_cast<qint64>(trackTimeToSeconds(position.time))},
            // The mean speed of the stretch ending here; the page colours the line by it.
            {QStringLiteral("speed"), position.speed ? QVariant(*position.speed) : QVariant()},
        });
    }
    return {{QStringLiteral("positions"), positions}};
}
} // namespace

MapWidgetAdapter::MapWidgetAdapter(QWebEngineView* view, QObject* parent)
    : MapWidgetAdapter(view, defaultPageUrl(), parent) {}

MapWidgetAdapter::MapWidgetAdapter(QWebEngineView* view, const QUrl& page, QObject* parent)
    : QObject(parent), m_view(view), m_webChannel(new QWebChannel(this)), m_sharedState(new MapWidgetSharedState(this)) {
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
}

void MapWidgetAdapter::setTrack(const TrackPositions* track) {
    m_track = track;
    m_cursor.reset(track);
    const TrackPositions simplified = track ? TrackSimplifier::simplify(*track) : TrackPositions();
    LOG_TRACE(kLogger, "Track size {}", simplified.size());
    emit m_sharedState->trackChanged(trackMessage(simplified));
    sendTimeMarks();
}

void MapWidgetAdapter::setCurrentTime(const QDateTime& dateTime, bool seekedByUser) {
    if (!m_track || m_track->empty())
        return;
    const double t = static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000.0;
    const MapPoint point = m_cursor.pointAt(t);
    // The last fix is a resting place, not a jump.
    const bool jumped = m_cursor.atLast() ? false : seekedByUser;
    emit m_sharedState->positionChanged(t, point.longitude, point.latitude, point.heading.value_or(0.0),
                                        jumped);
}

void MapWidgetAdapter::setTimeStep(int seconds) {
    m_timeStep = seconds;
    sendTimeMarks();
}

void MapWidgetAdapter::sendTimeMarks() {
    QVariantList marks;
    if (m_track) {
        for (const MapPoint& mark : timeMarksAlong(*m_track, m_timeStep)) {
            marks.append(QVariantMap{
                {QStringLiteral("coordinates"), coordinatesOf(mark.longitude, mark.latitude)},
                {QStringLiteral("angle"), mark.heading.value_or(0.0)},
                // The page labels each mark with its time.
                {QStringLiteral("captured"), mark.time},
            });
        }
    }
    emit m_sharedState->timeStepsChanged(marks);
}
