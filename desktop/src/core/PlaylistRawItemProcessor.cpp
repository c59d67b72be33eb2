// Raw-item processing: gap, folder and track events, then the walk that cuts raw items at those events.
#include "core/PlaylistRawItemProcessor.h"

#include "logging/Logging.h"

#include <algorithm>

namespace {

constexpr const char* kLogger = "core.Playlist";

std::string isoTime(const QDateTime& time) { return time.toString(Qt::ISODate).toStdString(); }

// An event recording without a track says nothing about driving or parking: it never makes an item alone.
bool isBareEventItem(const Playlist::RawItemPtr& item) {
    return item->category == Playlist::Event && !item->track;
}

const char* kindName(std::uint32_t kind) { return kind == Playlist::Trip ? "trip" : "parking"; }

} // namespace

void PlaylistRawItemProcessor::AnalyzedEventCollector::onTripStarted(TrackTime time) {
    const QDateTime at = trackTimeToDateTime(time);
    LOG_DEBUG(kLogger, "Collect trip event on {}", isoTime(at));
    m_events.push_back({at, TripStart});
}

void PlaylistRawItemProcessor::AnalyzedEventCollector::onParkingStarted(TrackTime time) {
    const QDateTime at = trackTimeToDateTime(time);
    LOG_DEBUG(kLogger, "Collect parking event on {}", isoTime(at));
    m_events.push_back({at, ParkingStart});
}

PlaylistRawItemProcessor::PlaylistRawItemProcessor(const TrackAnalyzer::Settings& settings,
                                                   std::int64_t gapThresholdSeconds)
    : m_settings(settings), m_gapThresholdSeconds(gapThresholdSeconds) {}

void PlaylistRawItemProcessor::process(const Playlist::RawItemPtr& item) {
    LOG_DEBUG(kLogger, "Process raw item with video '{}' (time interval: from {} to {})",
              item->mainVideo.filePath().toStdString(), isoTime(item->from), isoTime(item->to));

    if (m_previousEnd.isValid() && m_previousEnd.addSecs(m_gapThresholdSeconds) < item->from) {
        LOG_DEBUG(kLogger, "Collect gap event on {} {}", isoTime(m_previousEnd), isoTime(item->from));
        m_events.push_back({m_previousEnd, Gap});
        discardAnalyzer(); // the next track starts afresh
    }

    if (item->category == Playlist::Parking) {
        m_events.push_back({item->from, ParkingStart});
        discardAnalyzer();
    } else if ((item->category == Playlist::Normal || item->category == Playlist::Event) && item->track) {
        LOG_DEBUG(kLogger, "Analyze track of '{}' (track time interval: from {} to {})",
                  item->track->file.filePath().toStdString(), isoTime(item->track->from), isoTime(item->track->to));
        if (!m_analyzer)
            m_analyzer = std::make_unique<TrackAnalyzer>(m_settings, m_collector);
        for (const TrackPosition& position : item->track->positions)
            m_analyzer->feed(position);
    } else if (item->category == Playlist::Normal) {
        m_events.push_back({item->from, TripStart});
    } else if (item->category == Playlist::Event) {
        LOG_DEBUG(kLogger, "Collect event on {}", isoTime(item->from));
        m_events.push_back({item->from, RecorderEvent});
    }

    m_previousEnd = item->to;
    m_rawItems.push_back(item);
}

Playlist::ProcessedItems PlaylistRawItemProcessor::processedItems() const {
    Playlist::ProcessedItems result;
    if (m_rawItems.empty())
        return result;

    std::vector<Event> events = m_events;
    std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) { return a.time < b.time; });
    std::size_t next = 0;
    auto skipSameKind = [&](std::uint32_t kind) {
        while (next < events.size() && (events[next].kind == kind || events[next].kind == RecorderEvent))
            ++next;
    };

    bool started = false;
    std::uint32_t currentKind = Playlist::Trip;
    QDateTime currentFrom;
    Playlist::RawItems collected;

    auto emitItem = [&](const QDateTime& to, const char* reason) {
        const bool meaningful = std::any_of(collected.begin(), collected.end(),
                                            [](const Playlist::RawItemPtr& item) { return !isBareEventItem(item); });
        if (meaningful) {
            auto item = std::make_shared<Playlist::ProcessedItem>();
            item->from = currentFrom;
            item->to = to;
            item->items = std::move(collected);
            item->kind = currentKind;
            LOG_DEBUG(kLogger, "Found item ({}): {}, {} - {}", reason, kindName(item->kind), isoTime(item->from),
                      isoTime(item->to));
            result.push_back(std::move(item));
        }
        collected.clear();
    };

    for (const Playlist::RawItemPtr& raw : m_rawItems) {
        LOG_TRACE(kLogger, "Process raw item from {} to {}", isoTime(raw->from), isoTime(raw->to));
        if (!started) {
            const auto firstDrivingOrParking =
                std::find_if(m_rawItems.begin(), m_rawItems.end(),
                             [](const Playlist::RawItemPtr& item) { return item->category != Playlist::Event; });
            if (firstDrivingOrParking == m_rawItems.end())
                return {};
            started = true;
            currentKind = (*firstDrivingOrParking)->category == Playlist::Normal ? Playlist::Trip : Playlist::ParkingPeriod;
            skipSameKind(currentKind);
        }
        if (!currentFrom.isValid()) {
            currentFrom = raw->from;
            LOG_TRACE(kLogger, "Current from (raw item): {}", isoTime(currentFrom));
        }
        while (next < events.size() && events[next].time <= raw->to) {
            const Event event = events[next];
            LOG_TRACE(kLogger, "Process event at {}", isoTime(event.time));
            if (!currentFrom.isValid()) {
                if (event.time != raw->to)
                    LOG_ERROR(kLogger, "Invalid situation with event at {}", isoTime(event.time));
            } else {
                if (raw->from < event.time) {
                    LOG_TRACE(kLogger, "Collect current raw item");
                    collected.push_back(raw);
                }
                emitItem(std::min(collected.empty() ? event.time : collected.back()->to, event.time), "event");
                if (event.time < raw->to) {
                    currentFrom = event.time;
                    LOG_TRACE(kLogger, "Current from (event): {}", isoTime(currentFrom));
                } else {
                    currentFrom = QDateTime();
                }
            }
            // Consecutive events of one kind collapse into the first; event-folder events never split
            // anything; the first trip or parking event after a gap only sets the kind that follows it.
            if (event.kind == Gap)
                ++next;
            while (next < events.size() && events[next].kind == RecorderEvent)
                ++next;
            if (next < events.size() && events[next].kind != Gap) {
                started = true;
                currentKind = events[next].kind == ParkingStart ? Playlist::ParkingPeriod : Playlist::Trip;
                ++next;
                skipSameKind(currentKind);
            }
        }
        if (currentFrom.isValid()) {
            LOG_TRACE(kLogger, "Collect current raw item");
            collected.push_back(raw);
        }
    }
    if (currentFrom.isValid() && !collected.empty())
        emitItem(collected.back()->to, "finish");
    return result;
}
