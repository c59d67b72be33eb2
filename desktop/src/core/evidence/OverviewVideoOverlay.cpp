// The text burned into every picture of the overview video.
#include "core/evidence/OverviewVideoOverlay.h"

#include <QLocale>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace evidence {
namespace {

// Recorders write one fix a second; a fix two seconds old means at least one was lost, and an older
// position would be shown as if current.
constexpr std::int64_t kFixLifeSeconds = 2;

QString degrees(double value, char positive, char negative) {
    return QStringLiteral("%1° %2").arg(std::fabs(value), 0, 'f', 6).arg(QLatin1Char(value < 0 ? negative : positive));
}

} // namespace

TrackPositions trackIn(const Playlist::RawItems& items, const TimeInterval& interval) {
    const TrackTime from = trackTimeFromSeconds(interval.from.toSecsSinceEpoch());
    const TrackTime to = trackTimeFromSeconds(interval.to.toSecsSinceEpoch());
    TrackPositions track;
    for (const Playlist::RawItemPtr& item : items)
        if (item->track)
            std::copy_if(item->track->positions.begin(), item->track->positions.end(), std::back_inserter(track),
                         [from, to](const TrackPosition& p) { return from <= p.time && p.time <= to; });
    std::stable_sort(track.begin(), track.end(),
                     [](const TrackPosition& a, const TrackPosition& b) { return a.time < b.time; });
    return track;
}

SpeedUnit localeSpeedUnit() {
    return QLocale().measurementSystem() == QLocale::MetricSystem ? SpeedUnit::KilometresPerHour
                                                                   : SpeedUnit::MilesPerHour;
}

const TrackPosition* fixInForce(const TrackPositions& track, const QDateTime& time) {
    const std::int64_t seconds = time.toSecsSinceEpoch();
    auto after = std::upper_bound(track.begin(), track.end(), seconds, [](std::int64_t s, const TrackPosition& fix) {
        return s < trackTimeToSeconds(fix.time);
    });
    if (after == track.begin())
        return nullptr;
    const TrackPosition& fix = *std::prev(after);
    return seconds - trackTimeToSeconds(fix.time) < kFixLifeSeconds ? &fix : nullptr;
}

QString utcOffsetText(const QDateTime& time) {
    const int offset = time.offsetFromUtc();
    const int minutes = std::abs(offset) / 60;
    return QStringLiteral("UTC%1%2:%3")
        .arg(QLatin1Char(offset < 0 ? '-' : '+'))
        .arg(minutes / 60, 2, 10, QLatin1Char('0'))
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}

QString compassPoint(double degrees) {
    static const char* const kPoints[] = {"N", "NE", "E", "SE", "S", "SW", "W", "NW"};
    const double turned = std::fmod(std::fmod(degrees, 360.0) + 360.0 + 22.5, 360.0);
    return QLatin1String(kPoints[static_cast<int>(turned / 45.0) % 8]);
}

QString overlayText(const QDateTime& time, const TrackPosition* fix, SpeedUnit unit, const QString& noFix) {
    QString text = time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + utcOffsetText(time);
    if (!fix)
        return text + QLatin1Char('\n') + noFix;
    const QString speed = fix->speed ? QString::number(std::lround(speedIn(unit, *fix->speed))) : QStringLiteral("--");
    const QString heading = fix->course
                                ? QStringLiteral("%1° %2").arg(std::lround(*fix->course) % 360).arg(compassPoint(*fix->course))
                                : QStringLiteral("--");
    text += QStringLiteral("\n%1 %2  %3").arg(speed, QLatin1String(speedUnitName(unit)), heading);
    text += QStringLiteral("\n%1  %2").arg(degrees(fix->latitude, 'N', 'S'), degrees(fix->longitude, 'E', 'W'));
    return text;
}

} // namespace evidence
