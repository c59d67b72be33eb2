// Saves a cut of the recordings by decoding and encoding again, turning the picture when asked: the
// walk over each file's frames; the input, filter, sound and output parts live in files of their own.
#include "core/encoding/Coder.h"

#include "core/encoding/AudioConverter.h"
#include "core/encoding/CoderInput.h"
#include "core/encoding/CoderOutput.h"
#include "core/encoding/CoderParts.h"
#include "core/encoding/CutItems.h"
#include "core/encoding/VideoFilter.h"
#include "logging/Logging.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
}

#include <algorithm>
#include <memory>

namespace encoding {
namespace {

const CutTexts kTexts{kCoderLogger,
                      "Start encoding to '{}'",
                      "Transcode from '{}'",
                      "Caught exception in enc/dec loop on '{}': {}",
                      "Failed to encode to '{}': {}",
                      "Encoding to '{}' has been finished ({} ms)"};

// Decodes one camera file from startMs to endMs (offsets into the file) and encodes its frames so that
// they continue the output at outputStartMs.
class FileTranscoder {
public:
    FileTranscoder(InputFile& input, OutputFile& output, int rotation, double startMs, double endMs,
                   double outputStartMs, AVRational frameRate)
        : m_input(input), m_output(output), m_rotation(rotation), m_startMs(startMs), m_endMs(endMs),
          m_outputStartMs(outputStartMs), m_outputEndMs(outputStartMs),
          m_frameMs(frameRate.num > 0 ? 1000.0 * frameRate.den / frameRate.num : 40.0) {
        m_audioDone = !m_output.withAudio || !m_input.audio;
        if (!m_audioDone)
            m_converter = createAudioConverter(*m_input.audio, *m_output.audio);
        // MPEG-TS and the like count from an arbitrary start; MP4 and MOV from zero.
        if (m_input.format->start_time != AV_NOPTS_VALUE && m_input.format->start_time > 0)
            m_fileStartMs = m_input.format->start_time / 1000.0;
    }

    bool finished() const { return m_videoDone && m_audioDone; }
    void decodePacket(const AVPacket* packet);
    // Drains the decoders and the filter at the end of the file.
    void flush();
    // Output time written so far, in milliseconds.
    double outputEndMs() const { return m_outputEndMs; }

private:
    void decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo);
    void processVideo(AVFrame* frame, double ms);
    void processAudio(AVFrame* frame, double ms);
    void drainFilter();
    // The end of the picture written so far, in the audio encoder's time base.
    std::int64_t pictureEndPts() const;

    InputFile& m_input;
    OutputFile& m_output;
    int m_rotation;
    double m_startMs;
    double m_endMs;
    double m_outputStartMs;
    double m_outputEndMs;
    double m_frameMs;
    double m_fileStartMs = 0.0;
    bool m_videoDone = false;
    bool m_audioDone = false;
    bool m_audioAligned = false;
    std::int64_t m_lastVideoPts = AV_NOPTS_VALUE;
    std::int64_t m_lastAudioPts = AV_NOPTS_VALUE; // decoded, in the decoder's time base
    std::unique_ptr<VideoFilter> m_filter;
    std::unique_ptr<AudioConverter> m_converter;
    PacketPtr m_rescaled = allocPacket("Failed to alloc packet"); // the packet handed to a decoder
};

void FileTranscoder::decodePacket(const AVPacket* packet) {
    const bool isVideo = packet->stream_index == m_input.videoIndex;
    const bool isAudio = packet->stream_index == m_input.audioIndex;
    if (isVideo && !m_videoDone) {
        decode(m_input.video, packet, true);
    } else if (isAudio && !m_audioDone) {
        decode(m_input.audio, packet, false);
    }
}

void FileTranscoder::flush() {
    if (m_input.video)
        decode(m_input.video, nullptr, true);
    if (m_input.audio && m_converter)
        decode(m_input.audio, nullptr, false);
    if (m_filter) {
        const int result = av_buffersrc_add_frame_flags(m_filter->source, nullptr, 0);
        if (result < 0)
            fail(fmt::format("av_buffersrc_add_frame_flags: {}", ffmpegErrorText(result)));
        drainFilter();
    }
    // Camera files often carry a little more or less sound than picture; left alone, the difference adds up
    // from file to file. The sound is cut or padded to end with the picture, so every file starts in step.
    if (m_output.withAudio)
        endQueuedAudioAt(m_output, pictureEndPts());
}

void FileTranscoder::decode(AVCodecContext* decoder, const AVPacket* packet, bool isVideo) {
    if (packet) {
        // The caller's packet stays as it was read: the decoder gets a reference to its data with the
        // timestamps in the decoder's time base.
        const int referenced = av_packet_ref(m_rescaled.get(), packet);
        if (referenced < 0)
            fail(fmt::format("av_packet_ref: {}", ffmpegErrorText(referenced)));
        av_packet_rescale_ts(m_rescaled.get(), m_input.format->streams[packet->stream_index]->time_base,
                             decoder->time_base);
        packet = m_rescaled.get();
    }
    int result = avcodec_send_packet(decoder, packet);
    if (packet)
        av_packet_unref(m_rescaled.get());
    if (result < 0 && result != AVERROR_EOF)
        fail(fmt::format("avcodec_send_packet (isVideo: {}): {}", isVideo, ffmpegErrorText(result)));
    FramePtr frame = allocFrame("Failed to alloc frame");
    while (true) {
        result = avcodec_receive_frame(decoder, frame.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            fail(fmt::format("avcodec_receive_frame (isVideo: {}): {}", isVideo, ffmpegErrorText(result)));
        const std::int64_t pts = frame->best_effort_timestamp;
        if (pts != AV_NOPTS_VALUE) {
            const double ms = pts * av_q2d(decoder->time_base) * 1000.0 - m_fileStartMs;
            LOG_TRACE(kCoderLogger, "Process frame at {} ms (max: {})", ms, m_endMs);
            if (isVideo)
                processVideo(frame.get(), ms);
            else
                processAudio(frame.get(), ms);
        }
        av_frame_unref(frame.get());
    }
}

void FileTranscoder::processVideo(AVFrame* frame, double ms) {
    if (m_videoDone)
        return;
    if (ms > m_endMs) {
        m_videoDone = true;
        return;
    }
    if (ms < m_startMs)
        return; // decoded from the key frame before the cut only to reach its first picture
    const double outputMs = m_outputStartMs + (ms - m_startMs);
    const std::int64_t pts = toTimeBase(outputMs, m_output.video->time_base);
    LOG_TRACE(kCoderLogger, "isVideo: {} old: {} new: {} ms: {} prev: {}", true, frame->pts, pts, outputMs, m_lastVideoPts);
    if (m_lastVideoPts != AV_NOPTS_VALUE && pts <= m_lastVideoPts)
        return;
    m_lastVideoPts = pts;
    frame->pts = pts;
    frame->pict_type = AV_PICTURE_TYPE_NONE;
    m_outputEndMs = std::max(m_outputEndMs, outputMs + m_frameMs);
    if (!m_filter)
        m_filter = createVideoFilter(*frame, *m_output.video, m_rotation);
    const int result = av_buffersrc_add_frame_flags(m_filter->source, frame, AV_BUFFERSRC_FLAG_KEEP_REF);
    if (result < 0)
        fail(fmt::format("av_buffersrc_add_frame_flags: {}", ffmpegErrorText(result)));
    drainFilter();
}

void FileTranscoder::drainFilter() {
    FramePtr filtered = allocFrame("Failed to alloc filter frame");
    while (true) {
        const int result = av_buffersink_get_frame(m_filter->sink, filtered.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        if (result < 0)
            fail(fmt::format("Failed to get filter frame: {}", ffmpegErrorText(result)));
        encodeVideo(m_output, filtered.get());
        av_frame_unref(filtered.get());
    }
}

void FileTranscoder::processAudio(AVFrame* frame, double ms) {
    if (m_audioDone)
        return;
    if (ms > m_endMs) {
        m_audioDone = true;
        return;
    }
    if (ms < m_startMs)
        return;
    if (m_lastAudioPts != AV_NOPTS_VALUE && frame->best_effort_timestamp <= m_lastAudioPts)
        return;
    m_lastAudioPts = frame->best_effort_timestamp;
    if (!m_audioAligned) {
        // The queue ends where the earlier files' picture ended; this file's sound starts at its own time
        // after that (silence between when it starts late).
        m_audioAligned = true;
        const double outputMs = m_outputStartMs + (ms - m_startMs);
        const std::int64_t wanted = toTimeBase(outputMs, m_output.audio->time_base);
        LOG_TRACE(kCoderLogger, "isVideo: {} old: {} new: {} ms: {} prev: {}", false, frame->pts, wanted, outputMs,
                  m_output.nextAudioPts + av_audio_fifo_size(m_output.fifo));
        endQueuedAudioAt(m_output, wanted);
    }
    queueAudio(m_output, *m_converter, *frame);
    encodeQueuedAudio(m_output, false, pictureEndPts());
}

std::int64_t FileTranscoder::pictureEndPts() const {
    return toTimeBase(m_outputEndMs, m_output.audio->time_base);
}

// Decodes each file and encodes its frames into one output whose encoders live for the whole run.
class TranscodeWriter : public CutWriter {
public:
    explicit TranscodeWriter(const EncodingSettings& settings) : m_settings(settings) {}
    ~TranscodeWriter() override { closeOutput(); }

    void prepareInput(AVFormatContext* input, const QString& path) override {
        m_file.reset();
        m_input = openDecoders(input, path);
    }
    bool hasOutput() const override { return m_output != nullptr; }
    void createOutput(AVFormatContext*, const QString& targetPath, const QString& writePath) override {
        try {
            m_params = readStreamParams(*m_input, m_settings.onlyVideo);
            m_output = createOutputFile(m_params, targetPath, writePath, m_settings.rotation);
        } catch (const std::exception& error) {
            LOG_ERROR(kCoderLogger, "{} exception: {}", "createOutputFile", error.what());
            throw;
        }
    }
    int seekFlags() const override { return AVSEEK_FLAG_BACKWARD; }
    void beginFile(AVFormatContext*, const QString& path, const FileSpan& span) override {
        if (!m_input->video)
            LOG_WARN(kCoderLogger, "No video stream in '{}', skipped", path.toStdString());
        m_file = std::make_unique<FileTranscoder>(*m_input, *m_output, m_settings.rotation, span.startMs, span.endMs,
                                                  m_writtenMs, m_params.frameRate);
    }
    bool writePacket(AVPacket* packet) override {
        if (!m_input->video)
            return false;
        m_file->decodePacket(packet);
        return !m_file->finished();
    }
    void readFailed(int error) override { fail(fmt::format("Failed to read frame: {}", ffmpegErrorText(error))); }
    void endFile(bool canceled) override {
        if (!canceled && m_input->video)
            m_file->flush();
        m_writtenMs = std::max(m_writtenMs, m_file->outputEndMs());
        m_file.reset();
        m_input.reset();
    }
    double writtenMs() const override { return m_file ? std::max(m_writtenMs, m_file->outputEndMs()) : m_writtenMs; }
    void finishOutput(bool canceled) override { finishOutputFile(*m_output, canceled); }
    void closeOutput() override {
        m_file.reset();
        m_input.reset();
        m_output.reset();
    }

private:
    const EncodingSettings& m_settings;
    OutputStreamParams m_params;
    std::unique_ptr<OutputFile> m_output;
    std::unique_ptr<InputFile> m_input;
    std::unique_ptr<FileTranscoder> m_file;
    double m_writtenMs = 0.0; // output time written by the files before the current one
};

} // namespace
} // namespace encoding

Coder::Coder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent)
    : CutEncoder(std::move(items), std::move(interval), std::move(settings), parent) {}

void Coder::encode() {
    encoding::TranscodeWriter writer(m_settings);
    runCut(writer, encoding::kTexts);
}
