// Saves a cut of the recordings as one new file by stream copy.
#include "core/encoding/Remuxer.h"

#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

#include <QElapsedTimer>
#include <QFile>

extern "C" {
#include <libavformat/avformat.h>
}

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

constexpr const char* kLogger = "ui.Remuxer";
constexpr std::int64_t kUnsetOffset = std::numeric_limits<std::int64_t>::max();

// Creates the muxer from the first input that opens; logs and returns false on failure.
bool createOutput(AVFormatContext** output, const AVFormatContext* input, const QString& path, bool onlyVideo) {
    LOG_DEBUG(kLogger, "Create output file: '{}'", path.toStdString());
    const std::string utf8Path = encoding::ffmpegPath(path);
    AVFormatContext* out = nullptr;
    const int allocated = avformat_alloc_output_context2(&out, nullptr, nullptr, utf8Path.c_str());
    if (allocated < 0 || !out) {
        LOG_ERROR(kLogger, "Can't allocate output context: '{}'", encoding::ffmpegErrorText(allocated));
        return false;
    }
    *output = out;
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVStream* inStream = input->streams[i];
        if (onlyVideo && inStream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO)
            continue;
        AVStream* outStream = avformat_new_stream(out, nullptr);
        if (!outStream) {
            LOG_ERROR(kLogger, "Failed allocating output stream");
            return false;
        }
        const int copied = avcodec_parameters_copy(outStream->codecpar, inStream->codecpar);
        if (copied < 0) {
            LOG_ERROR(kLogger, "Fail copy stream parameters: '{}'", encoding::ffmpegErrorText(copied));
            return false;
        }
        outStream->codecpar->codec_tag = 0; // the muxer chooses a tag of its own container
    }
    if (avio_open(&out->pb, utf8Path.c_str(), AVIO_FLAG_WRITE) < 0) {
        LOG_ERROR(kLogger, "Could not open output file '{}'", path.toStdString());
        return false;
    }
    if (avformat_write_header(out, nullptr) < 0) {
        LOG_ERROR(kLogger, "Can't write header inno file: '{}'", path.toStdString());
        avio_closep(&out->pb);
        return false;
    }
    return true;
}

void freeOutput(AVFormatContext*& output) {
    if (!output)
        return;
    if (!(output->oformat->flags & AVFMT_NOFILE))
        avio_closep(&output->pb);
    avformat_free_context(output);
    output = nullptr;
}

struct PacketGuard {
    AVPacket* packet = av_packet_alloc();
    ~PacketGuard() { av_packet_free(&packet); }
};

struct InputGuard {
    AVFormatContext* context = nullptr;
    ~InputGuard() { avformat_close_input(&context); }
};

} // namespace

Remuxer::Remuxer(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent)
    : BaseEncoder(std::move(items), std::move(interval), std::move(settings), parent) {}

void Remuxer::encode() {
    m_canceled = false;
    const QString outputPath = m_settings.filePath;
    LOG_INFO(kLogger, "Start remuxing to '{}'", outputPath.toStdString());
    QElapsedTimer stopwatch;
    stopwatch.start();
    const Playlist::RawItems items = m_items;
    const std::int64_t totalMs = encoding::cutLengthMs(items, m_interval);
    emit progress(0);

    AVFormatContext* outputContext = nullptr;
    try {
        std::vector<std::int64_t> offsets;
        // Per stream, the last dts written, so a join never lets a stream's dts go backwards.
        std::vector<std::int64_t> lastDts;
        int lastPercent = 0;
        for (const auto& itemPtr : items) {
            if (m_canceled)
                break;
            const Playlist::RawItem& item = *itemPtr;
            if (!(m_interval.from < item.to))
                continue;
            if (!(item.from < m_interval.to))
                break;
            const QString inputPath = encoding::cutInputFile(item, m_settings.camera).filePath();
            try {
                LOG_DEBUG(kLogger, "Remuxe from '{}'", inputPath.toStdString());
                InputGuard input;
                const std::string utf8Input = encoding::ffmpegPath(inputPath);
                if (avformat_open_input(&input.context, utf8Input.c_str(), nullptr, nullptr) < 0) {
                    LOG_ERROR(kLogger, "Could not open input file '{}'", inputPath.toStdString());
                    continue;
                }
                if (!outputContext) {
                    if (!createOutput(&outputContext, input.context, outputPath, m_settings.onlyVideo))
                        throw std::runtime_error(fmt::format("Failed create output file: '{}'", outputPath.toStdString()));
                    offsets.assign(input.context->nb_streams, kUnsetOffset);
                    lastDts.assign(input.context->nb_streams, AV_NOPTS_VALUE);
                }
                if (item.from < m_interval.from) {
                    const std::int64_t ms = item.from.msecsTo(m_interval.from);
                    if (ms > 0) {
                        const auto ts = static_cast<std::int64_t>(static_cast<double>(ms) / 1000.0 * 1000000.0);
                        if (av_seek_frame(input.context, -1, ts, 0) < 0)
                            throw std::runtime_error(fmt::format("Failed seek in file: '{}'", inputPath.toStdString()));
                    }
                }
                std::vector<std::int64_t> nextDts(input.context->nb_streams, AV_NOPTS_VALUE);
                const QDateTime fileStart = item.from;
                PacketGuard packet;
                try {
                    while (!m_canceled) {
                        if (av_read_frame(input.context, packet.packet) < 0)
                            break;
                        AVPacket* pkt = packet.packet;
                        const unsigned index = static_cast<unsigned>(pkt->stream_index);
                        const AVStream* in = input.context->streams[index];
                        const bool isVideo = in->codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
                        if (m_settings.onlyVideo && !isVideo) {
                            av_packet_unref(pkt);
                            continue;
                        }
                        if (isVideo && (pkt->flags & AV_PKT_FLAG_KEY)) {
                            const QDateTime t = fileStart.addMSecs(static_cast<qint64>(
                                static_cast<double>(pkt->pts) * in->time_base.num / in->time_base.den * 1000.0));
                            if (m_interval.to < t) {
                                av_packet_unref(pkt);
                                break;
                            }
                        }
                        // A later file may carry streams the first one did not: those have no output.
                        if (index >= offsets.size() || index >= outputContext->nb_streams) {
                            av_packet_unref(pkt);
                            continue;
                        }
                        const AVStream* out = outputContext->streams[index];
                        if (in->codecpar->codec_type != out->codecpar->codec_type)
                            throw std::runtime_error(fmt::format("Unexpected stream type: {}",
                                                                 static_cast<int>(in->codecpar->codec_type)));
                        const auto rounding = static_cast<AVRounding>(AV_ROUND_NEAR_INF | AV_ROUND_PASS_MINMAX);
                        const std::int64_t dts = av_rescale_q_rnd(pkt->dts, in->time_base, out->time_base, rounding);
                        if (offsets[index] == kUnsetOffset)
                            offsets[index] = -dts;
                        else if (nextDts[index] == AV_NOPTS_VALUE && lastDts[index] != AV_NOPTS_VALUE &&
                                 dts + offsets[index] <= lastDts[index])
                            // First packet of a later file that starts below zero (B-frame delay, audio
                            // priming): move it just past the previous file so the muxer's dts keeps rising.
                            offsets[index] = lastDts[index] + 1 - dts;
                        if (pkt->pts != AV_NOPTS_VALUE)
                            pkt->pts = av_rescale_q_rnd(pkt->pts, in->time_base, out->time_base, rounding) + offsets[index];
                        pkt->dts = dts + offsets[index];
                        pkt->duration = av_rescale_q(pkt->duration, in->time_base, out->time_base);
                        nextDts[index] = pkt->dts + pkt->duration;
                        lastDts[index] = pkt->dts;
                        pkt->pos = -1;
                        const std::int64_t writtenDts = pkt->dts;
                        const int written = av_interleaved_write_frame(outputContext, pkt);
                        if (written < 0)
                            throw std::runtime_error(fmt::format("Error while write a frame: {}",
                                                                 encoding::ffmpegErrorText(written)));
                        const auto ms = static_cast<std::int64_t>(
                            static_cast<double>(writtenDts) * out->time_base.num / out->time_base.den * 1000.0);
                        if (totalMs > 0) {
                            const int percent = static_cast<int>(ms * 100.0 / totalMs);
                            if (percent > lastPercent) {
                                lastPercent = percent;
                                emit progress(percent);
                            }
                        }
                        av_packet_unref(pkt);
                    }
                } catch (const std::exception& error) {
                    LOG_ERROR(kLogger, "Caught exception in remuxing loop on '{}': {}", inputPath.toStdString(), error.what());
                    throw;
                }
                // The next file continues where this one's last packet of each stream ended.
                for (std::size_t i = 0; i < nextDts.size() && i < offsets.size(); ++i)
                    offsets[i] = nextDts[i] == AV_NOPTS_VALUE ? offsets[i] : nextDts[i];
            } catch (const std::exception& error) {
                LOG_WARN(kLogger, "Caught exception on '{}' ({}): {}", inputPath.toStdString(),
                         m_settings.camera != 0 ? "associated rear video" : "", error.what());
                throw;
            }
        }
        if (outputContext) {
            const int trailer = av_write_trailer(outputContext);
            if (trailer < 0 && !m_canceled)
                throw std::runtime_error(fmt::format("Error while write a frame: {}", encoding::ffmpegErrorText(trailer)));
            avio_closep(&outputContext->pb);
        }
    } catch (const std::exception& error) {
        LOG_ERROR(kLogger, "Failed to remuxe to '{}': {}", outputPath.toStdString(), error.what());
        freeOutput(outputContext);
        QFile::remove(outputPath);
        emit done(false);
        return;
    }
    freeOutput(outputContext);
    if (m_canceled) {
        QFile::remove(outputPath);
        emit canceled();
        return;
    }
    LOG_INFO(kLogger, "Remuxing to '{}' has been finished ({} ms)", outputPath.toStdString(), stopwatch.elapsed());
    emit done(true);
}
