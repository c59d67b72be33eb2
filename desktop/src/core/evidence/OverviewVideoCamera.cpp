// One camera's pictures over the overview's interval, decoded file after file.
#include "core/evidence/OverviewVideoCamera.h"

#include "core/encoding/CutItems.h"
#include "core/evidence/OverviewVideoSound.h"
#include "logging/Logging.h"

#include <QFileInfo>

namespace evidence::detail {
namespace {

constexpr const char* kLogger = "core.OverviewVideo";
// A picture older than this is not shown: no recording's frames lie a second apart, so the camera has no
// recording at that moment (a gap between files, or an item without a rear file) and its place stays black.
constexpr double kMaxPictureAgeMs = 1000.0;
// Muxers interleave sound within about half a second of the pictures it goes with.
constexpr double kSoundLeadMs = 500.0;

} // namespace

OverviewCamera::OverviewCamera(const Playlist::RawItems& items, int camera, const QDateTime& start,
                               const QDateTime& end, bool withSound)
    : m_withSound(withSound) {
    for (const auto& item : items) {
        if (!(start < item->to) || !(item->from < end))
            continue;
        if (camera == 1 && !item->rearVideo)
            continue;
        const QFileInfo file = camera == 1 ? *item->rearVideo : item->mainVideo;
        m_files.push_back({file.filePath(), static_cast<double>(start.msecsTo(item->from)),
                           item->from < start ? static_cast<double>(item->from.msecsTo(start)) : 0.0});
    }
}

void OverviewCamera::setSound(OverviewSound* sound) {
    m_sound = sound;
    for (auto& [ms, frame] : m_soundFrames)
        m_sound->add(*frame, ms);
    m_soundFrames.clear();
}

const AVFrame* OverviewCamera::firstPicture() {
    if (!m_next)
        fetch();
    return m_next.get();
}

const AVFrame* OverviewCamera::pictureAt(double outputMs) {
    while (m_next || fetch()) {
        if (m_nextMs > outputMs)
            break;
        m_current = std::move(m_next);
        m_currentMs = m_nextMs;
    }
    if (!m_current || outputMs - m_currentMs > kMaxPictureAgeMs)
        return nullptr;
    return m_current.get();
}

void OverviewCamera::drainSound(double endMs) {
    pictureAt(endMs + kSoundLeadMs);
}

// Fills m_next with the next picture; false when every file is used up.
bool OverviewCamera::fetch() {
    PacketPtr packet(av_packet_alloc());
    while (m_pending.empty()) {
        if (!m_input && !openNextFile())
            return false;
        const int result = av_read_frame(m_input.get(), packet.get());
        if (result < 0) {
            if (result != AVERROR_EOF)
                LOG_WARN(kLogger, "Failed to read '{}': {}", m_files[m_fileIndex - 1].path.toStdString(),
                         errorText(result));
            decode(m_video.get(), nullptr, true);
            if (m_audio)
                decode(m_audio.get(), nullptr, false);
            closeFile();
            continue;
        }
        if (packet->stream_index == m_videoIndex)
            decode(m_video.get(), packet.get(), true);
        else if (packet->stream_index == m_audioIndex && m_audio)
            decode(m_audio.get(), packet.get(), false);
        av_packet_unref(packet.get());
    }
    m_nextMs = m_pending.front().first;
    m_next = std::move(m_pending.front().second);
    m_pending.pop_front();
    return true;
}

bool OverviewCamera::openNextFile() {
    while (m_fileIndex < m_files.size()) {
        const File& file = m_files[m_fileIndex++];
        try {
            open(file);
            return true;
        } catch (const std::exception& error) {
            LOG_ERROR(kLogger, "Could not open input file '{}': {}", file.path.toStdString(), error.what());
            closeFile();
        }
    }
    return false;
}

void OverviewCamera::open(const File& file) {
    const std::string path = encoding::ffmpegPath(file.path);
    AVFormatContext* format = nullptr;
    check(avformat_open_input(&format, path.c_str(), nullptr, nullptr), "avformat_open_input");
    m_input.reset(format);
    check(avformat_find_stream_info(format, nullptr), "avformat_find_stream_info");
    m_videoIndex = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (m_videoIndex < 0)
        fail("no video stream");
    m_video = openDecoder(format, m_videoIndex);
    if (m_frameRate.num == 0)
        m_frameRate = av_guess_frame_rate(format, format->streams[m_videoIndex], nullptr);
    m_audioIndex = m_withSound ? av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, m_videoIndex, nullptr, 0) : -1;
    if (m_audioIndex >= 0) {
        try {
            m_audio = openDecoder(format, m_audioIndex);
            if (m_sampleRate == 0) {
                m_sampleRate = m_audio->sample_rate;
                m_channels = m_audio->ch_layout.nb_channels;
            }
        } catch (const std::exception& error) {
            LOG_WARN(kLogger, "Sound of '{}' left out: {}", file.path.toStdString(), error.what());
            m_audioIndex = -1;
        }
    }
    m_fileStartMs = format->start_time != AV_NOPTS_VALUE ? format->start_time / 1000.0 : 0.0;
    m_file = &file;
    if (file.skipMs > 0) {
        const auto ts = static_cast<std::int64_t>((m_fileStartMs + file.skipMs) * 1000.0);
        if (av_seek_frame(format, -1, ts, AVSEEK_FLAG_BACKWARD) < 0)
            LOG_WARN(kLogger, "Failed seek in file: '{}'", file.path.toStdString());
    }
    LOG_DEBUG(kLogger, "Overview from '{}' at {} ms", file.path.toStdString(), file.outputStartMs);
}

void OverviewCamera::closeFile() {
    m_video.reset();
    m_audio.reset();
    m_input.reset();
    m_videoIndex = m_audioIndex = -1;
    m_file = nullptr;
}

void OverviewCamera::decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo) {
    const int sent = avcodec_send_packet(decoder, packet);
    if (sent < 0 && sent != AVERROR_EOF) {
        LOG_WARN(kLogger, "avcodec_send_packet (isVideo: {}): {}", isVideo, errorText(sent));
        return; // a damaged packet costs a picture, not the overview
    }
    while (true) {
        FramePtr frame = newFrame();
        const int result = avcodec_receive_frame(decoder, frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0) {
            LOG_WARN(kLogger, "avcodec_receive_frame (isVideo: {}): {}", isVideo, errorText(result));
            return;
        }
        if (frame->best_effort_timestamp == AV_NOPTS_VALUE)
            continue;
        const double inFileMs =
            frame->best_effort_timestamp * av_q2d(decoder->pkt_timebase) * 1000.0 - m_fileStartMs;
        if (inFileMs < m_file->skipMs - (isVideo ? 0.0 : 1.0))
            continue; // decoded from the key frame before the interval only to reach its start
        const double outputMs = m_file->outputStartMs + inFileMs;
        if (isVideo) {
            if (outputMs <= m_lastVideoMs)
                continue; // the previous file ran on past this one's start
            m_lastVideoMs = outputMs;
            m_pending.emplace_back(outputMs, std::move(frame));
        } else if (m_sound) {
            m_sound->add(*frame, outputMs);
        } else {
            m_soundFrames.emplace_back(outputMs, std::move(frame));
        }
    }
}

} // namespace evidence::detail
