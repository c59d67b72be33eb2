// The walk over a cut's files that the stream copy and the re-encode share.
#include "core/encoding/CutEncoder.h"

#include "core/encoding/CutItems.h"
#include "logging/Logging.h"

#include <QElapsedTimer>

extern "C" {
#include <libavformat/avformat.h>
}

#include <algorithm>

namespace {

// 2 s: a stream copy begins at the first key frame at or after the cut's start, and cameras put one
// every 1 to 2 s; a shorter shortfall is the cut's own rounding, not missing recordings.
constexpr std::int64_t kShortfallSlackMs = 2000;

struct InputGuard {
    AVFormatContext* context = nullptr;
    ~InputGuard() { avformat_close_input(&context); }
};

struct PacketGuard {
    AVPacket* packet = av_packet_alloc();
    ~PacketGuard() { av_packet_free(&packet); }
};

} // namespace

bool CutEncoder::wroteLessThanAsked() const { return m_writtenMs + kShortfallSlackMs < m_askedMs; }

void CutEncoder::runCut(encoding::CutWriter& writer, const encoding::CutTexts& texts) {
    m_canceled = false;
    setFailure({}, false);
    m_writtenMs = 0;
    const QString target = m_settings.filePath;
    const std::string targetText = target.toStdString();
    LOG_INFO(texts.logger, texts.start, targetText);
    QElapsedTimer stopwatch;
    stopwatch.start();
    const Playlist::RawItems items = m_items;
    m_askedMs = encoding::cutLengthMs(items, m_interval);
    emit progress(0);

    if (const exporttarget::Refusal refused = targetRefusal()) {
        LOG_ERROR(texts.logger, texts.failed, targetText, refused.text.toStdString());
        setFailure(refused.text, true);
        emit done(false);
        return;
    }

    PartialFile partial(target);
    bool stopped = false; // the user's cancel, as last seen before the file took its place
    int lastPercent = 0;
    auto reportProgress = [&] {
        if (m_askedMs <= 0)
            return;
        const int percent = static_cast<int>(writer.writtenMs() * 100.0 / m_askedMs);
        if (percent > lastPercent) {
            lastPercent = percent;
            emit progress(percent);
        }
    };
    try {
        for (const auto& itemPtr : items) {
            if (m_canceled)
                break;
            const Playlist::RawItem& item = *itemPtr;
            if (!(m_interval.from < item.to))
                continue;
            if (!(item.from < m_interval.to))
                break;
            const QString inputPath = encoding::cutInputFile(item, m_settings.camera).filePath();
            const std::string inputText = inputPath.toStdString();
            try {
                LOG_DEBUG(texts.logger, texts.file, inputText);
                InputGuard input;
                const std::string utf8Input = encoding::ffmpegPath(inputPath);
                if (avformat_open_input(&input.context, utf8Input.c_str(), nullptr, nullptr) < 0) {
                    LOG_ERROR(texts.logger, "Could not open input file '{}'", inputText);
                    continue;
                }
                try {
                    writer.prepareInput(input.context, inputPath);
                } catch (const std::exception& error) {
                    LOG_ERROR(texts.logger, "Could not open input file '{}': {}", inputText, error.what());
                    continue;
                }
                if (!writer.hasOutput()) {
                    partial.create();
                    partial.closeDescriptor(); // the muxer opens the file by its name
                    writer.createOutput(input.context, target, partial.path());
                }
                encoding::FileSpan span;
                span.begin = item.from;
                span.startMs = item.from < m_interval.from ? static_cast<double>(item.from.msecsTo(m_interval.from)) : 0.0;
                span.endMs = static_cast<double>(item.from.msecsTo(m_interval.to));
                if (span.startMs > 0) {
                    const auto ts = static_cast<std::int64_t>(span.startMs / 1000.0 * 1000000.0);
                    const int flags = writer.seekFlags();
                    if (av_seek_frame(input.context, -1, ts, flags) < 0) {
                        // No key frame after the start in this file (one group of pictures, a long one, or the
                        // start near the end): the key frame before it is the nearest place a copy can begin.
                        if ((flags & AVSEEK_FLAG_BACKWARD) ||
                            av_seek_frame(input.context, -1, ts, flags | AVSEEK_FLAG_BACKWARD) < 0)
                            throw std::runtime_error(fmt::format("Failed seek in file: '{}'", inputText));
                        LOG_INFO(texts.logger, "No key frame after {:.3f} s in '{}': the cut starts at the key frame before",
                                 span.startMs / 1000.0, inputText);
                    }
                }
                PacketGuard packet;
                try {
                    writer.beginFile(input.context, inputPath, span);
                    while (!m_canceled) {
                        const int read = av_read_frame(input.context, packet.packet);
                        if (read == AVERROR_EOF)
                            break;
                        if (read < 0) {
                            writer.readFailed(read);
                            break;
                        }
                        const bool more = writer.writePacket(packet.packet);
                        av_packet_unref(packet.packet);
                        reportProgress();
                        if (!more)
                            break;
                    }
                    writer.endFile(m_canceled);
                } catch (const std::exception& error) {
                    LOG_ERROR(texts.logger, texts.loopFailed, inputText, error.what());
                    throw;
                }
            } catch (const std::exception& error) {
                LOG_WARN(texts.logger, "Caught exception on '{}' ({}): {}", inputText,
                         m_settings.camera != 0 ? "associated rear video" : "", error.what());
                throw;
            }
        }
        if (writer.hasOutput()) {
            writer.finishOutput(m_canceled);
            if (!m_canceled)
                reportProgress();
        }
        m_writtenMs = static_cast<std::int64_t>(writer.writtenMs());
        writer.closeOutput();
        stopped = m_canceled; // a cancel after this point comes too late: the file is whole
        if (!stopped && partial.created())
            partial.commit(m_permissions.overwrite);
    } catch (const std::exception& error) {
        LOG_ERROR(texts.logger, texts.failed, targetText, error.what());
        writer.closeOutput();
        partial.discard();
        setFailure(QString::fromStdString(error.what()), dynamic_cast<const exporttarget::TargetError*>(&error) != nullptr);
        emit done(false);
        return;
    }
    if (stopped) {
        partial.discard();
        emit canceled();
        return;
    }
    LOG_INFO(texts.logger, texts.finished, targetText, stopwatch.elapsed());
    if (wroteLessThanAsked())
        LOG_WARN(texts.logger, "Only {:.1f} s of the {:.1f} s asked were written to '{}'", m_writtenMs / 1000.0,
                 m_askedMs / 1000.0, targetText);
    emit done(true);
}
