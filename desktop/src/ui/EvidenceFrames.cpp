// Pictures of an evidence pack, decoded from the recordings, with EXIF.
#include "ui/EvidenceFrames.h"

#include "av/Ffmpeg.h"
#include "av/FrameConverter.h"
#include "logging/Logging.h"
#include "ui/ExifWriter.h"

#include <QDir>
#include <QFile>

#include <stdexcept>

namespace {

constexpr const char* kLogger = "ui.EvidenceFrames";
// High enough that compression adds nothing a viewer could mistake for detail of the scene.
constexpr int kJpegQuality = 95;

[[noreturn]] void fail(const std::string& what, int code) {
    throw std::runtime_error(fmt::format("{}: {}", what, av::ffmpegError(code)));
}

// The item recording at a moment; at the very end of an item, that item unless the next one starts there.
const Playlist::RawItem* itemAt(const Playlist::RawItems& items, const QDateTime& moment) {
    const Playlist::RawItem* atEnd = nullptr;
    for (const auto& item : items) {
        if (item->from <= moment && moment < item->to)
            return item.get();
        if (moment == item->to)
            atEnd = item.get();
    }
    return atEnd;
}

// The last frame at or before `ms` into the file (the first one when none is earlier).
av::FramePtr decodeFrameAt(const QString& path, double ms) {
    AVFormatContext* opened = nullptr;
    const QByteArray utf8 = path.toUtf8();
    int result = avformat_open_input(&opened, utf8.constData(), nullptr, nullptr);
    if (result < 0)
        fail("avformat_open_input", result);
    av::FormatContextPtr format(opened);
    if ((result = avformat_find_stream_info(opened, nullptr)) < 0)
        fail("avformat_find_stream_info", result);
    const AVCodec* codec = nullptr;
    const int index = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    if (index < 0)
        fail("no video stream", index);
    AVStream* stream = opened->streams[index];
    av::CodecContextPtr decoder(avcodec_alloc_context3(codec));
    if (!decoder)
        throw std::runtime_error("avcodec_alloc_context3 failed");
    if ((result = avcodec_parameters_to_context(decoder.get(), stream->codecpar)) < 0)
        fail("avcodec_parameters_to_context", result);
    decoder->pkt_timebase = stream->time_base;
    if ((result = avcodec_open2(decoder.get(), codec, nullptr)) < 0)
        fail("avcodec_open2", result);

    const double startMs = opened->start_time != AV_NOPTS_VALUE ? opened->start_time / 1000.0 : 0.0;
    if (ms > 0)
        av_seek_frame(opened, -1, static_cast<std::int64_t>((startMs + ms) * 1000.0), AVSEEK_FLAG_BACKWARD);

    av::FramePtr best;
    av::FramePtr frame(av_frame_alloc());
    av::PacketPtr packet(av_packet_alloc());
    bool ended = false;
    while (!ended) {
        const bool more = av_read_frame(opened, packet.get()) >= 0;
        if (more && packet->stream_index != index) {
            av_packet_unref(packet.get());
            continue;
        }
        avcodec_send_packet(decoder.get(), more ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(decoder.get(), frame.get()) >= 0) {
            const double frameMs = frame->best_effort_timestamp * av_q2d(stream->time_base) * 1000.0 - startMs;
            if (best && frameMs > ms) {
                ended = true;
                break;
            }
            best = std::move(frame);
            frame.reset(av_frame_alloc());
        }
        if (!more)
            break;
    }
    if (!best)
        throw std::runtime_error("no picture decoded");
    return best;
}

} // namespace

EvidenceFrames::EvidenceFrames(Playlist::RawItems items, TrackPositions positions)
    : m_items(std::move(items)), m_positions(std::move(positions)) {}

QString EvidenceFrames::fileName(const QDateTime& moment, int camera) {
    return moment.toString(QStringLiteral("yyyy-MM-dd_HH-mm-ss.zzz")) +
           (camera == 0 ? QStringLiteral("_front.jpg") : QStringLiteral("_rear.jpg"));
}

QImage EvidenceFrames::pictureAt(const QDateTime& moment, int camera) const {
    const Playlist::RawItem* item = itemAt(m_items, moment);
    if (!item || (camera == 1 && !item->rearVideo))
        return {};
    const QString path = camera == 1 ? item->rearVideo->filePath() : item->mainVideo.filePath();
    const av::FramePtr frame = decodeFrameAt(path, static_cast<double>(item->from.msecsTo(moment)));
    av::FrameConverter converter;
    return converter.convert(frame.get(), av::displaySize(frame.get()));
}

std::vector<EvidenceFrame> EvidenceFrames::write(const std::vector<QDateTime>& moments, const QString& folder,
                                                 QStringList* errors, const std::atomic<bool>* canceled) const {
    std::vector<EvidenceFrame> written;
    for (const QDateTime& moment : moments) {
        for (int camera = 0; camera < 2; ++camera) {
            if (canceled && *canceled)
                return written;
            const QString path = QDir(folder).filePath(fileName(moment, camera));
            try {
                const QImage picture = pictureAt(moment, camera);
                if (picture.isNull())
                    continue;
                if (!picture.save(path, "JPG", kJpegQuality))
                    throw std::runtime_error("the picture could not be written");
                const std::optional<TrackPosition> position = trackPositionAt(m_positions, moment);
                if (position && !writeExifPosition(path, *position, moment))
                    throw std::runtime_error("its EXIF block could not be written");
                written.push_back({moment, camera, path});
            } catch (const std::exception& error) {
                LOG_ERROR(kLogger, "Failed to save the picture '{}': {}", path.toStdString(), error.what());
                QFile::remove(path);
                if (errors)
                    *errors << QStringLiteral("%1: %2").arg(QDir::toNativeSeparators(path), QString::fromUtf8(error.what()));
            }
        }
    }
    return written;
}
