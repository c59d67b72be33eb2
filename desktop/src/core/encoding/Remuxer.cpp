// Saves a cut of the recordings as one new file by stream copy.
#include "core/encoding/Remuxer.h"

#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
#include <libavutil/avutil.h>
}

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

constexpr const char* kLogger = "ui.Remuxer";
constexpr std::int64_t kUnsetOffset = std::numeric_limits<std::int64_t>::max();

const encoding::CutTexts kTexts{kLogger,
                                "Start remuxing to '{}'",
                                "Remuxe from '{}'",
                                "Caught exception in remuxing loop on '{}': {}",
                                "Failed to remuxe to '{}': {}",
                                "Remuxing to '{}' has been finished ({} ms)"};

// The name of a stream's codec, or its four-character tag where FFmpeg knows no codec for it ("tmcd",
// "gpmd", "camm").
std::string streamCodecName(const AVCodecParameters* parameters) {
    if (parameters->codec_id != AV_CODEC_ID_NONE)
        return avcodec_get_name(parameters->codec_id);
    char tag[AV_FOURCC_MAX_STRING_SIZE] = {};
    return av_fourcc_make_string(tag, parameters->codec_tag);
}

// Whether a stream can be copied into the container: cameras add time code, telemetry (GPMF, camera motion)
// and text tracks that only their own container holds, and a muxer refuses the whole file for one stream it
// cannot take. A stream without a codec FFmpeg knows, or whose codec the container says it cannot hold, is
// left out; one the container says nothing about is tried.
bool containerTakes(const AVOutputFormat* format, const AVCodecParameters* parameters) {
    switch (parameters->codec_type) {
    case AVMEDIA_TYPE_VIDEO:
    case AVMEDIA_TYPE_AUDIO:
    case AVMEDIA_TYPE_SUBTITLE:
    case AVMEDIA_TYPE_DATA: break;
    default: return false; // attachments and the like: nothing a cut needs
    }
    if (parameters->codec_id == AV_CODEC_ID_NONE)
        return false;
    return avformat_query_codec(format, parameters->codec_id, FF_COMPLIANCE_NORMAL) != 0;
}

// H.264 and H.265 as MP4 stores them (lengths before the units, parameter sets in the header) for a
// container that wants them with start codes and the parameter sets in the stream (AVI): a filter made for
// the stream, or nullptr where none is needed. Fills the output's parameters from the filter's.
AVBSFContext* annexBFilter(const AVOutputFormat* format, const AVStream* in, AVStream* out) {
    const AVCodecParameters* parameters = in->codecpar;
    const bool lengthPrefixed = parameters->extradata_size > 0 && parameters->extradata[0] == 1;
    if (std::strcmp(format->name, "avi") != 0 || !lengthPrefixed)
        return nullptr;
    const char* name = parameters->codec_id == AV_CODEC_ID_H264   ? "h264_mp4toannexb"
                       : parameters->codec_id == AV_CODEC_ID_HEVC ? "hevc_mp4toannexb"
                                                                  : nullptr;
    const AVBitStreamFilter* kind = name ? av_bsf_get_by_name(name) : nullptr;
    AVBSFContext* filter = nullptr;
    if (!kind || av_bsf_alloc(kind, &filter) < 0)
        return nullptr;
    avcodec_parameters_copy(filter->par_in, parameters);
    filter->time_base_in = in->time_base;
    if (av_bsf_init(filter) < 0 || avcodec_parameters_copy(out->codecpar, filter->par_out) < 0) {
        av_bsf_free(&filter);
        throw std::runtime_error(fmt::format("Failed create output file: start codes for stream #{}", in->index));
    }
    out->codecpar->codec_tag = 0;
    return filter;
}

// Copies the packets of each file into one muxer, their timestamps moved so the files follow one another.
class StreamCopyWriter : public encoding::CutWriter {
public:
    explicit StreamCopyWriter(bool onlyVideo) : m_onlyVideo(onlyVideo) {}
    ~StreamCopyWriter() override { closeOutput(); }

    void prepareInput(AVFormatContext*, const QString&) override {}
    bool hasOutput() const override { return m_output != nullptr; }
    void createOutput(AVFormatContext* input, const QString& targetPath, const QString& writePath) override;
    int seekFlags() const override { return 0; }
    void beginFile(AVFormatContext* input, const QString&, const encoding::FileSpan& span) override {
        m_input = input;
        m_fileStart = span.begin;
        m_to = span.begin.addMSecs(static_cast<qint64>(span.endMs));
        m_nextDts.assign(input->nb_streams, AV_NOPTS_VALUE);
    }
    bool writePacket(AVPacket* packet) override;
    void readFailed(int) override {} // a damaged end of a file ends that file, as the end of the file does
    void endFile(bool) override {
        // The next file continues where this one's last packet of each stream ended.
        for (std::size_t i = 0; i < m_nextDts.size() && i < m_offsets.size(); ++i)
            if (m_nextDts[i] != AV_NOPTS_VALUE)
                m_offsets[i] = m_nextDts[i];
        m_input = nullptr;
    }
    double writtenMs() const override { return m_writtenMs; }
    void finishOutput(bool canceled) override {
        const int trailer = av_write_trailer(m_output);
        if (trailer < 0 && !canceled)
            encoding::failWriting(fmt::format("Error while write a frame: {}", encoding::ffmpegErrorText(trailer)), trailer);
        const int closed = avio_closep(&m_output->pb);
        if (closed < 0 && !canceled)
            encoding::failWriting(fmt::format("Error while write a frame: {}", encoding::ffmpegErrorText(closed)), closed);
    }
    void closeOutput() override {
        if (!m_output)
            return;
        if (!(m_output->oformat->flags & AVFMT_NOFILE))
            avio_closep(&m_output->pb);
        avformat_free_context(m_output);
        for (AVBSFContext*& filter : m_filters)
            av_bsf_free(&filter);
        m_filters.clear();
        m_output = nullptr;
    }

private:
    bool m_onlyVideo;
    AVFormatContext* m_output = nullptr;
    AVFormatContext* m_input = nullptr;
    QDateTime m_fileStart;
    QDateTime m_to;
    void write(AVPacket* packet) {
        const int written = av_interleaved_write_frame(m_output, packet);
        if (written < 0)
            encoding::failWriting(fmt::format("Error while write a frame: {}", encoding::ffmpegErrorText(written)), written);
    }

    std::vector<int> m_outputOf;         // per stream of the first input: its output stream, or -1 when left out
    std::vector<AVBSFContext*> m_filters; // per output stream: the start-code filter it passes, or nullptr
    std::vector<std::int64_t> m_offsets; // per stream of the first input, in the output time base
    std::vector<std::int64_t> m_nextDts; // per stream of the current input: dts + duration of its last packet
    // Per stream, the last dts written, so a join never lets a stream's dts go backwards.
    std::vector<std::int64_t> m_lastDts;
    double m_writtenMs = 0.0;
};

void StreamCopyWriter::createOutput(AVFormatContext* input, const QString& targetPath, const QString& writePath) {
    LOG_DEBUG(kLogger, "Create output file: '{}'", targetPath.toStdString());
    auto failure = [&](const std::string& reason, int error) {
        encoding::failWriting(fmt::format("Failed create output file: '{}': {}", targetPath.toStdString(), reason), error);
    };
    const std::string utf8Target = encoding::ffmpegPath(targetPath);
    const int allocated = avformat_alloc_output_context2(&m_output, nullptr, nullptr, utf8Target.c_str());
    if (allocated < 0 || !m_output) {
        const std::string text = encoding::ffmpegErrorText(allocated);
        LOG_ERROR(kLogger, "Can't allocate output context: '{}'", text);
        failure(fmt::format("no container for this file name ({})", text), 0);
    }
    m_outputOf.assign(input->nb_streams, -1);
    for (unsigned i = 0; i < input->nb_streams; ++i) {
        const AVStream* inStream = input->streams[i];
        if (m_onlyVideo && inStream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO)
            continue;
        if (!containerTakes(m_output->oformat, inStream->codecpar)) {
            const char* type = av_get_media_type_string(inStream->codecpar->codec_type);
            LOG_INFO(kLogger, "Stream #{} ({} '{}') is left out: {} cannot hold it", i, type ? type : "unknown",
                     streamCodecName(inStream->codecpar), m_output->oformat->name);
            continue;
        }
        m_outputOf[i] = static_cast<int>(m_output->nb_streams);
        AVStream* outStream = avformat_new_stream(m_output, nullptr);
        if (!outStream) {
            LOG_ERROR(kLogger, "Failed allocating output stream");
            failure("Failed allocating output stream", 0);
        }
        const int copied = avcodec_parameters_copy(outStream->codecpar, inStream->codecpar);
        if (copied < 0) {
            LOG_ERROR(kLogger, "Fail copy stream parameters: '{}'", encoding::ffmpegErrorText(copied));
            failure(encoding::ffmpegErrorText(copied), 0);
        }
        outStream->codecpar->codec_tag = 0; // the muxer chooses a tag of its own container
        m_filters.push_back(annexBFilter(m_output->oformat, inStream, outStream));
    }
    const std::string utf8Write = encoding::ffmpegPath(writePath);
    const int opened = encoding::openCreatedOutput(&m_output->pb, utf8Write);
    if (opened < 0) {
        LOG_ERROR(kLogger, "Could not open output file '{}'", targetPath.toStdString());
        failure(encoding::ffmpegErrorText(opened), opened);
    }
    const int header = avformat_write_header(m_output, nullptr);
    if (header < 0) {
        LOG_ERROR(kLogger, "Can't write header inno file: '{}'", targetPath.toStdString());
        avio_closep(&m_output->pb);
        failure(encoding::ffmpegErrorText(header), header);
    }
    m_offsets.assign(input->nb_streams, kUnsetOffset);
    m_lastDts.assign(input->nb_streams, AV_NOPTS_VALUE);
}

bool StreamCopyWriter::writePacket(AVPacket* pkt) {
    const unsigned index = static_cast<unsigned>(pkt->stream_index);
    const AVStream* in = m_input->streams[index];
    const bool isVideo = in->codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
    if (m_onlyVideo && !isVideo)
        return true;
    if (isVideo && (pkt->flags & AV_PKT_FLAG_KEY)) {
        const QDateTime t = m_fileStart.addMSecs(
            static_cast<qint64>(static_cast<double>(pkt->pts) * in->time_base.num / in->time_base.den * 1000.0));
        if (m_to < t)
            return false;
    }
    // A later file may carry streams the first one did not: those have no output, as the streams left out.
    if (index >= m_outputOf.size() || m_outputOf[index] < 0)
        return true;
    const AVStream* out = m_output->streams[m_outputOf[index]];
    if (in->codecpar->codec_type != out->codecpar->codec_type)
        throw std::runtime_error(fmt::format("Unexpected stream type: {}", static_cast<int>(in->codecpar->codec_type)));
    const auto rounding = static_cast<AVRounding>(AV_ROUND_NEAR_INF | AV_ROUND_PASS_MINMAX);
    const std::int64_t dts = av_rescale_q_rnd(pkt->dts, in->time_base, out->time_base, rounding);
    if (m_offsets[index] == kUnsetOffset)
        m_offsets[index] = -dts;
    else if (m_nextDts[index] == AV_NOPTS_VALUE && m_lastDts[index] != AV_NOPTS_VALUE &&
             dts + m_offsets[index] <= m_lastDts[index])
        // First packet of a later file that starts below zero (B-frame delay, audio priming): move it just
        // past the previous file so the muxer's dts keeps rising.
        m_offsets[index] = m_lastDts[index] + 1 - dts;
    if (pkt->pts != AV_NOPTS_VALUE)
        pkt->pts = av_rescale_q_rnd(pkt->pts, in->time_base, out->time_base, rounding) + m_offsets[index];
    pkt->dts = dts + m_offsets[index];
    pkt->duration = av_rescale_q(pkt->duration, in->time_base, out->time_base);
    m_nextDts[index] = pkt->dts + pkt->duration;
    m_lastDts[index] = pkt->dts;
    pkt->pos = -1;
    pkt->stream_index = m_outputOf[index];
    const double endMs = static_cast<double>(m_nextDts[index]) * out->time_base.num / out->time_base.den * 1000.0;
    if (AVBSFContext* filter = m_filters[m_outputOf[index]]) {
        int filtered = av_bsf_send_packet(filter, pkt);
        while (filtered >= 0 && (filtered = av_bsf_receive_packet(filter, pkt)) >= 0)
            write(pkt);
        if (filtered < 0 && filtered != AVERROR(EAGAIN))
            throw std::runtime_error(fmt::format("Error while write a frame: {}", encoding::ffmpegErrorText(filtered)));
    } else {
        write(pkt);
    }
    m_writtenMs = std::max(m_writtenMs, endMs);
    return true;
}

} // namespace

Remuxer::Remuxer(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent)
    : CutEncoder(std::move(items), std::move(interval), std::move(settings), parent) {}

void Remuxer::encode() {
    StreamCopyWriter writer(m_settings.onlyVideo);
    runCut(writer, kTexts);
}
