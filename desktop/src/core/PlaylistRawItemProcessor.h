// Cuts the time-ordered raw items of a playlist into trips and parking periods.
#pragma once

#include "core/Playlist.h"
#include "core/TrackAnalyzer.h"

#include <QDateTime>

#include <cstdint>
#include <memory>
#include <vector>

// Feed every raw item in time order with process(), then call processedItems().
//
//   PlaylistRawItemProcessor processor(TrackAnalyzer::Settings{}, 300);
//   for (const auto& item : rawItems) processor.process(item);
//   Playlist::ProcessedItems trips = processor.processedItems();
class PlaylistRawItemProcessor {
public:
    enum EventKind : std::uint32_t { TripStart = 0, ParkingStart = 1, Gap = 2, RecorderEvent = 3 };
    struct Event {
        QDateTime time;
        EventKind kind;
    };

    // Turns the analyzer's decisions into events of the processor.
    class AnalyzedEventCollector : public TrackAnalyzer::IEventHandler {
    public:
        explicit AnalyzedEventCollector(std::vector<Event>& events) : m_events(events) {}
        void onTripStarted(TrackTime time) override;
        void onParkingStarted(TrackTime time) override;

    private:
        std::vector<Event>& m_events;
    };

    PlaylistRawItemProcessor(const TrackAnalyzer::Settings& settings, std::int64_t gapThresholdSeconds);

    void process(const Playlist::RawItemPtr& item);
    // The trips and parking periods of the items processed so far, in time order.
    Playlist::ProcessedItems processedItems() const;
    // Every event collected so far, in the order found.
    const std::vector<Event>& events() const { return m_events; }

private:
    void discardAnalyzer() { m_analyzer.reset(); }

    TrackAnalyzer::Settings m_settings;
    std::int64_t m_gapThresholdSeconds;
    std::vector<Event> m_events;
    AnalyzedEventCollector m_collector{m_events};
    std::unique_ptr<TrackAnalyzer> m_analyzer;
    QDateTime m_previousEnd;
    Playlist::RawItems m_rawItems;
};
