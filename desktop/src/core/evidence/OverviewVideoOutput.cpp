// The overview's file with its H.264 and AAC encoders, in the container its name asks for.
#include "core/evidence/OverviewVideoOutput.h"

#include "core/encoding/CutItems.h"

#include <fmt/format.h>

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>

namespace evidence::detail {
namespace {

// One key frame every two seconds keeps seeking in a player quick without costing much size.
constexpr int kKeyFrameSeconds = 2;
// x264 "veryfast" at CRF 23: a quarter of the time "medium" takes, and the overlay's text stays sharp.
constexpr const char* kX264Preset = "veryfast";
constexpr const char* kX264Crf = "23";
constexpr std::int64_t kAudioBitRate = 128000;

} // namespace

OverviewOutput::OverviewOutput(const QString& targetPath, const QString& writePath, int width, int height,
                               AVRational frameRate, int sampleRate, int channels) {
    try {
        open(targetPath, writePath, width, height, frameRate, sampleRate, channels);
    } catch (...) {
        close();
        throw;
    }
}

void OverviewOutput::open(const QString& targetPath, const QString& writePath, int width, int height,
                          AVRational frameRate, int sampleRate, int channels) {
    const std::string utf8Target = encoding::ffmpegPath(targetPath);
    const std::string utf8Path = encoding::ffmpegPath(writePath);
    const AVOutputFormat* container = av_guess_format(nullptr, utf8Target.c_str(), nullptr);
    if (!container)
        fail(fmt::format("No container is known for '{}'", utf8Target));
    check(avformat_alloc_output_context2(&format, container, nullptr, utf8Path.c_str()),
          "avformat_alloc_output_context2");
    const bool globalHeader = format->oformat->flags & AVFMT_GLOBALHEADER;

    const AVCodec* h264 = avcodec_find_encoder_by_name("libx264");
    if (!h264)
        h264 = avcodec_find_encoder(AV_CODEC_ID_H264);
    if (!h264)
        fail("No H.264 encoder");
    video.reset(avcodec_alloc_context3(h264));
    AVCodecContext* videoEncoder = video.get();
    videoEncoder->width = width;
    videoEncoder->height = height;
    videoEncoder->sample_aspect_ratio = AVRational{1, 1};
    videoEncoder->pix_fmt = AV_PIX_FMT_YUV420P;
    videoEncoder->framerate = frameRate;
    videoEncoder->time_base = av_inv_q(frameRate);
    videoEncoder->gop_size = kKeyFrameSeconds * frameRate.num / std::max(1, frameRate.den);
    videoEncoder->thread_count = 0;
    if (globalHeader)
        videoEncoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(videoEncoder->priv_data, "preset", kX264Preset, 0);
    av_opt_set(videoEncoder->priv_data, "crf", kX264Crf, 0);
    check(avcodec_open2(videoEncoder, h264, nullptr), "avcodec_open2 for video stream");
    videoStream = avformat_new_stream(format, nullptr);
    if (!videoStream)
        fail("avformat_new_stream for video stream");
    check(avcodec_parameters_from_context(videoStream->codecpar, videoEncoder), "avcodec_parameters_from_context");
    videoStream->time_base = videoEncoder->time_base;

    if (channels > 0)
        openSound(sampleRate, channels, globalHeader);

    const int opened = encoding::openCreatedOutput(&format->pb, utf8Path);
    if (opened < 0)
        encoding::failWriting(fmt::format("avio_open: {}", errorText(opened)), opened);
    const int header = avformat_write_header(format, nullptr);
    if (header < 0)
        encoding::failWriting(fmt::format("avformat_write_header: {}", errorText(header)), header);
}

void OverviewOutput::openSound(int sampleRate, int channels, bool globalHeader) {
    const AVCodec* aac = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!aac)
        fail("No AAC encoder");
    audio.reset(avcodec_alloc_context3(aac));
    AVCodecContext* audioEncoder = audio.get();
    audioEncoder->sample_rate = sampleRate;
    av_channel_layout_default(&audioEncoder->ch_layout, channels);
    audioEncoder->sample_fmt = aac->sample_fmts ? aac->sample_fmts[0] : AV_SAMPLE_FMT_FLTP;
    audioEncoder->bit_rate = kAudioBitRate;
    audioEncoder->time_base = AVRational{1, sampleRate};
    if (globalHeader)
        audioEncoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    check(avcodec_open2(audioEncoder, aac, nullptr), "avcodec_open2 for audio stream");
    audioStream = avformat_new_stream(format, nullptr);
    if (!audioStream)
        fail("avformat_new_stream for audio stream");
    check(avcodec_parameters_from_context(audioStream->codecpar, audioEncoder), "avcodec_parameters_from_context");
    audioStream->time_base = audioEncoder->time_base;
}

OverviewOutput::~OverviewOutput() {
    close();
}

void OverviewOutput::close() {
    if (format) {
        if (format->pb)
            avio_closep(&format->pb);
        avformat_free_context(format);
        format = nullptr;
    }
}

void OverviewOutput::encode(AVCodecContext* encoder, AVStream* stream, const AVFrame* frame) {
    const int sent = avcodec_send_frame(encoder, frame);
    if (sent < 0 && !(frame == nullptr && sent == AVERROR_EOF))
        fail(fmt::format("avcodec_send_frame: {}", errorText(sent)));
    PacketPtr packet(av_packet_alloc());
    while (true) {
        const int result = avcodec_receive_packet(encoder, packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        check(result, "avcodec_receive_packet");
        av_packet_rescale_ts(packet.get(), encoder->time_base, stream->time_base);
        packet->stream_index = stream->index;
        const int written = av_interleaved_write_frame(format, packet.get());
        if (written < 0)
            encoding::failWriting(fmt::format("av_interleaved_write_frame: {}", errorText(written)), written);
    }
}

void OverviewOutput::finish() {
    encode(video.get(), videoStream, nullptr);
    const int trailer = av_write_trailer(format);
    if (trailer < 0)
        encoding::failWriting(fmt::format("av_write_trailer: {}", errorText(trailer)), trailer);
    const int closed = avio_closep(&format->pb);
    if (closed < 0)
        encoding::failWriting(fmt::format("avio_closep: {}", errorText(closed)), closed);
}

} // namespace evidence::detail
