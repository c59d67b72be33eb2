// Finding the pictures of a recording without index, and writing them into a new MP4 with a sibling's parameters.
#include "core/RecordingRepair.h"

#include "core/Mp4Boxes.h"
#include "logging/Logging.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

extern "C" {
#include <libavformat/avformat.h>
}

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace {

constexpr const char* kLogger = "core.RecordingRepair";
// Larger than any picture of a 4K recording: a length beyond it is not a NAL unit but other data.
constexpr quint32 kMaxNalBytes = 16u << 20;
// Share of the progress the walk over the media data takes; writing the copy takes the rest.
constexpr int kWalkedPercent = 90;

struct InputCloser {
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct OutputCloser {
    void operator()(AVFormatContext* context) const {
        if (context->pb)
            avio_closep(&context->pb);
        avformat_free_context(context);
    }
};
using Input = std::unique_ptr<AVFormatContext, InputCloser>;
using Output = std::unique_ptr<AVFormatContext, OutputCloser>;

std::string ffmpegText(int error) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(error, text, sizeof text);
    return text;
}

// What the walk needs of the healthy sibling.
struct Parameters {
    Input input; // owns `video`
    const AVStream* video = nullptr;
    int lengthSize = 4;      // bytes of each NAL unit's length prefix
    int frameNumBits = 0;    // width of frame_num in slice headers, from the sequence parameter set
    qint64 maxPicture = 0;   // the largest picture of the sibling
};

// Reads the bits of a NAL unit's payload, passing over emulation prevention bytes (00 00 03).
class BitReader {
public:
    BitReader(const uchar* data, qint64 size) : m_data(data), m_size(size) {}
    bool bit() {
        if (m_bit == 0) {
            if (m_byte + 1 >= m_size) {
                m_failed = true;
                return false;
            }
            ++m_byte;
            if (m_byte >= 2 && m_data[m_byte] == 3 && m_data[m_byte - 1] == 0 && m_data[m_byte - 2] == 0 &&
                m_byte + 1 < m_size)
                ++m_byte;
            m_bit = 8;
        }
        --m_bit;
        return (m_data[m_byte] >> m_bit) & 1;
    }
    quint32 bits(int count) {
        quint32 value = 0;
        for (int i = 0; i < count; ++i)
            value = value << 1 | static_cast<quint32>(bit());
        return value;
    }
    // Exp-Golomb; a value of more than 31 bits is taken as a failed read.
    quint32 ue() {
        int zeros = 0;
        while (!bit() && !m_failed)
            if (++zeros > 31)
                m_failed = true;
        return m_failed ? 0 : (1u << zeros) - 1 + bits(zeros);
    }
    bool failed() const { return m_failed; }

private:
    const uchar* m_data;
    qint64 m_size;
    qint64 m_byte = 0; // starts on the NAL header byte, which is passed over by the first bit()
    int m_bit = 0;
    bool m_failed = false;
};

// log2_max_frame_num of a sequence parameter set (its NAL header included).
int frameNumBitsOf(const uchar* sps, qint64 size) {
    BitReader reader(sps, size);
    const quint32 profile = reader.bits(8);
    reader.bits(16); // constraint flags, level
    reader.ue();     // seq_parameter_set_id
    static const std::set<quint32> highProfiles{100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135};
    if (highProfiles.count(profile)) {
        if (reader.ue() == 3) // chroma_format_idc
            reader.bit();
        reader.ue();
        reader.ue();
        reader.bit();
        if (reader.bit()) // scaling matrices: not walked
            return 0;
    }
    const quint32 bits = reader.ue() + 4;
    return reader.failed() || bits > 16 ? 0 : static_cast<int>(bits);
}

Parameters readParameters(const QString& siblingPath) {
    Parameters parameters;
    AVFormatContext* context = nullptr;
    if (avformat_open_input(&context, QFile::encodeName(siblingPath).constData(), nullptr, nullptr) < 0)
        throw RecordingRepair::Failure("The healthy recording to take the parameters from cannot be opened");
    parameters.input.reset(context);
    if (avformat_find_stream_info(context, nullptr) < 0)
        throw RecordingRepair::Failure("The healthy recording to take the parameters from cannot be read");
    const int index = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (index < 0 || context->streams[index]->codecpar->codec_id != AV_CODEC_ID_H264)
        throw RecordingRepair::Failure("Only H.264 recordings can be repaired");
    AVStream* video = context->streams[index];
    const AVCodecParameters* codec = video->codecpar;
    if (codec->extradata_size < 7 || codec->extradata[0] != 1)
        throw RecordingRepair::Failure("The healthy recording holds no H.264 configuration");
    // Pictures written in another order than shown cannot be put back in order without their index.
    if (codec->video_delay > 0)
        throw RecordingRepair::Failure("The recording uses B-frames: its pictures cannot be put back in order");
    const AVRational rate = video->avg_frame_rate.num > 0 ? video->avg_frame_rate : video->r_frame_rate;
    if (rate.num <= 0 || rate.den <= 0)
        throw RecordingRepair::Failure("The healthy recording has no frame rate");
    parameters.video = video;
    parameters.lengthSize = (codec->extradata[4] & 0x03) + 1;
    if ((codec->extradata[5] & 0x1F) > 0) {
        const int spsSize = codec->extradata[6] << 8 | codec->extradata[7];
        if (8 + spsSize <= codec->extradata_size)
            parameters.frameNumBits = frameNumBitsOf(codec->extradata + 8, spsSize);
    }
    if (parameters.frameNumBits == 0)
        throw RecordingRepair::Failure("The healthy recording's H.264 configuration cannot be read");
    for (int i = 0; i < avformat_index_get_entries_count(video); ++i)
        parameters.maxPicture = std::max<qint64>(parameters.maxPicture, avformat_index_get_entry(video, i)->size);
    if (parameters.maxPicture == 0)
        parameters.maxPicture = kMaxNalBytes / 4;
    return parameters;
}

// One picture: its bytes in the damaged file (relative to the walked data) and whether it can be decoded alone.
struct Picture {
    qint64 offset = 0;
    qint64 size = 0;
    bool key = false;
};

// One NAL unit of H.264 media data as far as the walk needs it.
struct Nal {
    qint64 size = 0; // length prefix and payload
    int type = 0;
    bool reference = false;
    bool slice = false;
    bool firstSlice = false; // a slice whose first macroblock is 0 begins a picture
    quint32 frameNum = 0;
};

// Recognises length-prefixed NAL units in media data. What it accepts must look like what the sibling's
// encoder writes (sizes within its largest picture, slice headers that parse), so that the bytes of the sound
// between the pictures are hardly ever taken for a picture.
class NalWalk {
public:
    NalWalk(const uchar* data, qint64 size, const Parameters& parameters)
        : m_data(data), m_size(size), m_lengthSize(parameters.lengthSize), m_frameNumBits(parameters.frameNumBits),
          m_maxSlice(parameters.maxPicture * 2 + 1024) {}

    std::optional<Nal> nalAt(qint64 at) const {
        if (at + m_lengthSize + 2 > m_size)
            return std::nullopt;
        qint64 length = 0;
        for (int i = 0; i < m_lengthSize; ++i)
            length = length << 8 | m_data[at + i];
        const uchar header = m_data[at + m_lengthSize];
        Nal nal;
        nal.type = header & 0x1F;
        nal.reference = (header & 0x60) != 0;
        nal.slice = nal.type == 1 || nal.type == 5;
        // Parameter sets, supplemental information and delimiters are short.
        const qint64 limit = nal.slice ? m_maxSlice : 4096;
        if ((header & 0x80) != 0 || length < 2 || length > limit || at + m_lengthSize + length > m_size)
            return std::nullopt;
        if (!nal.slice && (nal.type < 6 || nal.type > 9))
            return std::nullopt;
        nal.size = m_lengthSize + length;
        if (!nal.slice)
            return nal;
        if (nal.type == 5 && !nal.reference)
            return std::nullopt;
        BitReader reader(m_data + at + m_lengthSize, length);
        nal.firstSlice = reader.ue() == 0;
        const quint32 sliceType = reader.ue();
        const quint32 pictureParameterSet = reader.ue();
        nal.frameNum = reader.bits(m_frameNumBits);
        const bool intra = sliceType % 5 == 2 || sliceType % 5 == 4;
        if (reader.failed() || sliceType > 9 || pictureParameterSet > 255 || (nal.type == 5 && !intra))
            return std::nullopt;
        return nal;
    }
    int lengthSize() const { return m_lengthSize; }
    quint32 maxFrameNum() const { return 1u << m_frameNumBits; }

private:
    const uchar* m_data;
    qint64 m_size;
    int m_lengthSize;
    int m_frameNumBits;
    qint64 m_maxSlice;
};

} // namespace

RecordingRepair::RecordingRepair(QString damagedPath, QString siblingPath, QString outputFolder, QObject* parent)
    : QObject(parent), m_damagedPath(std::move(damagedPath)), m_siblingPath(std::move(siblingPath)),
      m_outputFolder(std::move(outputFolder)) {}

std::optional<QString> RecordingRepair::healthySibling(const QString& damagedPath) {
    const QFileInfo damaged(damagedPath);
    const QString baseName = damaged.completeBaseName();
    const QChar camera = baseName.isEmpty() ? QChar() : baseName.back();
    const QFileInfoList files = damaged.dir().entryInfoList(QDir::Files | QDir::Readable, QDir::Name);
    // Names are times: the nearest files in name order were recorded with the most likely the same settings.
    const auto place = std::find_if(files.begin(), files.end(),
                                    [&](const QFileInfo& file) { return file.fileName() == damaged.fileName(); });
    const int at = static_cast<int>(place - files.begin());
    for (int distance = 1; distance < files.size(); ++distance) {
        for (const int i : {at - distance, at + distance}) {
            if (i < 0 || i >= files.size())
                continue;
            const QFileInfo& file = files[i];
            if (file.suffix() != damaged.suffix() || !file.completeBaseName().endsWith(camera))
                continue;
            const std::vector<Mp4Box> boxes = topLevelBoxes(file.filePath());
            if (std::any_of(boxes.begin(), boxes.end(), [](const Mp4Box& box) { return box.type == "moov"; }))
                return file.filePath();
        }
    }
    return std::nullopt;
}

QString RecordingRepair::outputPath() const {
    return QDir(m_outputFolder).filePath(QFileInfo(m_damagedPath).fileName());
}

void RecordingRepair::repair(const std::function<void(int)>& progress) {
    const QFileInfo folder(m_outputFolder);
    if (!folder.isDir())
        throw Failure("The folder for the repaired copy does not exist");
    if (folder.canonicalFilePath() == QFileInfo(m_damagedPath).canonicalPath())
        throw Failure("The repaired copy must go to another folder than the original");
    const QString target = outputPath();
    if (QFileInfo::exists(target))
        throw Failure("A file of that name is in the folder already");

    const std::vector<Mp4Box> boxes = topLevelBoxes(m_damagedPath);
    if (!hasIndexLost(boxes))
        throw Failure("The recording has its index or no media data: there is nothing to repair");
    const Mp4Box& mdat =
        *std::find_if(boxes.begin(), boxes.end(), [](const Mp4Box& box) { return box.type == "mdat"; });
    const Parameters parameters = readParameters(m_siblingPath);

    QFile damaged(m_damagedPath);
    if (!damaged.open(QIODevice::ReadOnly))
        throw Failure("The recording cannot be read");
    // To the end of the file: a recorder that lost power may have left the size of mdat unwritten.
    const qint64 dataStart = mdat.offset + mdat.headerSize;
    const qint64 dataSize = damaged.size() - dataStart;
    const uchar* data = dataSize > 0 ? damaged.map(dataStart, dataSize) : nullptr;
    if (!data)
        throw Failure("The recording's media data cannot be read");

    // The walk: whole pictures of contiguous NAL units, other bytes (the sound) passed over. A picture is taken
    // only when its frame_num follows the last reference picture's (or it is an IDR picture, which starts over),
    // so that neither a picture is lost unnoticed nor stray bytes are taken for one.
    const NalWalk walk(data, dataSize, parameters);
    std::vector<Picture> pictures;
    Picture current;
    bool currentHasSlice = false;
    bool currentIsReference = false;
    quint32 currentFrameNum = 0;
    std::optional<quint32> lastReferenceFrameNum;
    const auto finishPicture = [&] {
        if (currentHasSlice) {
            pictures.push_back(current);
            if (currentIsReference)
                lastReferenceFrameNum = currentFrameNum;
        }
        current = Picture{};
        currentHasSlice = currentIsReference = false;
    };
    int lastPercent = -1;
    for (qint64 at = 0; at + walk.lengthSize() < dataSize;) {
        if (m_canceled)
            throw Canceled{};
        const int percent = static_cast<int>(at * kWalkedPercent / dataSize);
        if (progress && percent != lastPercent)
            progress(lastPercent = percent);
        std::optional<Nal> nal = walk.nalAt(at);
        if (nal && nal->slice && nal->firstSlice) {
            const std::optional<quint32> reference =
                currentHasSlice && currentIsReference ? std::optional<quint32>(currentFrameNum) : lastReferenceFrameNum;
            const bool follows = nal->type == 5 ? nal->frameNum == 0
                                                : reference && nal->frameNum == (*reference + 1) % walk.maxFrameNum();
            if (!follows)
                nal.reset();
        } else if (nal && nal->slice && !currentHasSlice) {
            nal.reset(); // a later slice of a picture whose beginning is lost
        }
        if (!nal) {
            finishPicture();
            ++at; // other data: on to where the pictures go on
            continue;
        }
        if (currentHasSlice && (nal->firstSlice || !nal->slice))
            finishPicture();
        if (current.size == 0)
            current.offset = at;
        current.size = at + nal->size - current.offset;
        if (nal->slice && nal->firstSlice) {
            currentHasSlice = true;
            currentIsReference = nal->reference;
            currentFrameNum = nal->frameNum;
        }
        current.key = current.key || nal->type == 5;
        at += nal->size;
    }
    finishPicture();
    if (pictures.empty())
        throw Failure("No pictures were found in the recording");

    // The copy, written beside its target and renamed into place once complete.
    const QString temporary =
        QDir(m_outputFolder).filePath(QStringLiteral(".%1.repairing").arg(QFileInfo(target).fileName()));
    try {
        AVFormatContext* context = nullptr;
        const QByteArray temporaryName = QFile::encodeName(temporary);
        if (avformat_alloc_output_context2(&context, nullptr, "mp4", temporaryName.constData()) < 0)
            throw Failure("The MP4 writer cannot be made");
        Output output(context);
        AVStream* stream = avformat_new_stream(context, nullptr);
        if (!stream || avcodec_parameters_copy(stream->codecpar, parameters.video->codecpar) < 0)
            throw Failure("The picture stream cannot be made");
        stream->codecpar->codec_tag = 0;
        const AVRational rate = parameters.video->avg_frame_rate.num > 0 ? parameters.video->avg_frame_rate
                                                                          : parameters.video->r_frame_rate;
        const AVRational frameTime{rate.den, rate.num};
        stream->time_base = frameTime;
        int result = avio_open(&context->pb, temporaryName.constData(), AVIO_FLAG_WRITE);
        if (result < 0 || (result = avformat_write_header(context, nullptr)) < 0)
            throw Failure("The repaired copy cannot be written: " + ffmpegText(result));
        std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet(av_packet_alloc(),
                                                              [](AVPacket* p) { av_packet_free(&p); });
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            if (m_canceled)
                throw Canceled{};
            av_packet_unref(packet.get());
            if (av_new_packet(packet.get(), static_cast<int>(pictures[i].size)) < 0)
                throw Failure("Out of memory");
            std::copy_n(data + pictures[i].offset, pictures[i].size, packet->data);
            packet->pts = packet->dts = static_cast<int64_t>(i);
            packet->duration = 1;
            packet->flags = pictures[i].key ? AV_PKT_FLAG_KEY : 0;
            packet->stream_index = stream->index;
            av_packet_rescale_ts(packet.get(), frameTime, stream->time_base);
            if ((result = av_write_frame(context, packet.get())) < 0)
                throw Failure("The repaired copy cannot be written: " + ffmpegText(result));
            if (progress)
                progress(kWalkedPercent + static_cast<int>((100 - kWalkedPercent) * (i + 1) / pictures.size()));
        }
        if ((result = av_write_trailer(context)) < 0)
            throw Failure("The repaired copy cannot be written: " + ffmpegText(result));
    } catch (...) {
        QFile::remove(temporary);
        throw;
    }
    if (!QFile::rename(temporary, target)) {
        QFile::remove(temporary);
        throw Failure("The repaired copy cannot be put in place");
    }
    m_pictures = static_cast<int>(pictures.size());
    LOG_INFO(kLogger, "Repaired {} into {}: {} pictures", m_damagedPath.toStdString(), target.toStdString(),
             m_pictures);
}

void RecordingRepair::run() {
    try {
        repair([this](int percent) { emit progress(percent); });
        emit done(true);
    } catch (const Canceled&) {
        emit canceled();
    } catch (const std::exception& error) {
        m_error = QString::fromStdString(error.what());
        LOG_ERROR(kLogger, "{} exception: {}", "RecordingRepair::run", error.what());
        emit done(false);
    }
}
