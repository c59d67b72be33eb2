// The sound of one file: decodes, changes tempo without changing pitch, and feeds the audio sink in step
// with the player's clock.
#pragma once

#include "av/Clock.h"
#include "av/Ffmpeg.h"
#include "av/MediaQueues.h"

#include <atomic>
#include <thread>

struct AVFilterGraph;
struct AVFilterContext;

namespace av {

class AudioSink;

// Runs on a thread of its own. Sound keeps its pitch up to 2x and is dropped above, as well as while the
// clock is paused. The sink may be null (no audio device): then packets are only consumed.
class AudioDecoder {
public:
    AudioDecoder(CodecContextPtr codec, AVRational timeBase, double originMs, const Clock& clock, AudioSink* sink);
    ~AudioDecoder();

    PacketQueue& packets() { return m_packets; }
    void start();
    void stop();

private:
    void run();
    void decodePacket(const AVPacket* packet);
    void filterAndQueue(AVFrame* frame);
    bool buildFilters(double speed);
    void freeFilters();

    CodecContextPtr m_codec;
    const AVRational m_timeBase;
    const double m_originMs;
    const Clock& m_clock;
    AudioSink* m_sink;
    PacketQueue m_packets{512, 1 << 20};  // sound packets are small: the count bounds it
    std::atomic<bool> m_stop{false};
    std::thread m_thread;

    int m_serial = 0;
    AVFilterGraph* m_graph = nullptr;
    AVFilterContext* m_source = nullptr;
    AVFilterContext* m_output = nullptr;
    double m_graphSpeed = 0;
};

} // namespace av
