// Shared by the encoder tests: three 3-second recordings (the first two with a rear file), and a run of
// an encoder that counts its end signals.
#pragma once

#include "core/BaseEncoder.h"
#include "support/GeneratedMedia.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <sys/mount.h>
#include <unistd.h>

namespace cutfixture {

inline const QDateTime& base() {
    static const QDateTime time(QDate(2024, 5, 1), QTime(10, 0, 0));
    return time;
}

inline QDateTime at(double seconds) {
    return base().addMSecs(static_cast<qint64>(seconds * 1000));
}

// The recordings, made once per test program.
class Media {
public:
    static Media& instance() {
        static Media media;
        return media;
    }
    bool ready() const { return m_ready; }
    QString path(const QString& name) const { return m_dir.filePath(name); }

    // Three items of 3 s each, back to back from base(); the third has no rear file.
    Playlist::RawItems items() const {
        Playlist::RawItems result;
        for (int i = 0; i < 3; ++i) {
            auto item = std::make_shared<Playlist::RawItem>();
            item->mainVideo = QFileInfo(path(QStringLiteral("main%1.mp4").arg(i)));
            if (i < 2)
                item->rearVideo = QFileInfo(path(QStringLiteral("rear%1.mp4").arg(i)));
            item->from = at(3.0 * i);
            item->to = at(3.0 * i + 3.0);
            result.push_back(item);
        }
        return result;
    }

private:
    Media() {
        m_ready = m_dir.isValid();
        const QStringList patterns{"testsrc2", "smptebars", "rgbtestsrc"};
        for (int i = 0; i < 3 && m_ready; ++i) {
            testsupport::MediaOptions media;
            media.pattern = patterns[i];
            m_ready = testsupport::generateVideo(path(QStringLiteral("main%1.mp4").arg(i)), media);
        }
        for (int i = 0; i < 2 && m_ready; ++i) {
            testsupport::MediaOptions media;
            media.width = 160;
            media.height = 96;
            m_ready = testsupport::generateVideo(path(QStringLiteral("rear%1.mp4").arg(i)), media);
        }
        testsupport::MediaOptions other;
        other.sampleRate = 48000;
        m_ready = m_ready && testsupport::generateVideo(path(QStringLiteral("other48k.mp4")), other);
        // The second recording again, with its sound twice: a later file with more streams than the first.
        QProcess extra;
        extra.start(QStringLiteral("ffmpeg"), {"-v", "error", "-y", "-i", path("main1.mp4"), "-map", "0", "-map", "0:a",
                                               "-c", "copy", path("extra1.mp4")});
        m_ready = m_ready && extra.waitForFinished(60000) && extra.exitCode() == 0;
    }
    QTemporaryDir m_dir;
    bool m_ready = false;
};

// Runs encode() in the calling thread and records what the encoder signalled.
struct EncoderRun {
    int doneTrue = 0;
    int doneFalse = 0;
    int canceled = 0;
    std::vector<int> progress;

    explicit EncoderRun(BaseEncoder& encoder, int cancelAtPercent = -1) {
        QObject::connect(&encoder, &BaseEncoder::done, [this](bool ok) { ++(ok ? doneTrue : doneFalse); });
        QObject::connect(&encoder, &BaseEncoder::canceled, [this] { ++canceled; });
        QObject::connect(&encoder, &BaseEncoder::progress, [this, &encoder, cancelAtPercent](int percent) {
            progress.push_back(percent);
            if (cancelAtPercent >= 0 && percent >= cancelAtPercent)
                encoder.cancel();
        });
        encoder.encode();
    }
    int endSignals() const { return doneTrue + doneFalse + canceled; }
    bool progressNeverFalls() const { return std::is_sorted(progress.begin(), progress.end()); }
};

// Per stream: dts strictly rising, and (for audio) each packet starting where the previous one ended.
inline void expectContinuousTimestamps(const QString& file) {
    const auto streams = testsupport::probeStreams(file);
    const auto packets = testsupport::probePackets(file);
    ASSERT_FALSE(packets.empty());
    for (const auto& stream : streams) {
        double lastDts = -1e9;
        double audioEnd = -1.0;
        int count = 0;
        for (const auto& packet : packets) {
            if (packet.stream != stream.index)
                continue;
            ++count;
            EXPECT_GT(packet.dts, lastDts) << stream.type.toStdString() << " packet " << count;
            lastDts = packet.dts;
            if (stream.type == QLatin1String("audio")) {
                if (audioEnd >= 0) {
                    EXPECT_NEAR(packet.pts, audioEnd, 0.025) << "gap in the sound at packet " << count;
                }
                audioEnd = packet.pts + packet.duration;
            }
        }
        EXPECT_GT(count, 0) << stream.type.toStdString();
    }
}

inline int countOf(const std::vector<testsupport::ProbedStream>& streams, const char* type) {
    return static_cast<int>(std::count_if(streams.begin(), streams.end(),
                                          [type](const auto& s) { return s.type == QLatin1String(type); }));
}

// A 64 KiB file system, so that any real cut fills it; unmounted when it goes.
class FullDisk {
public:
    FullDisk() {
        if (geteuid() != 0) {
            m_skipReason = "needs root to mount a small tmpfs";
            return;
        }
        const QByteArray where = QFile::encodeName(m_dir.path());
        if (mount("tmpfs", where.constData(), "tmpfs", 0, "size=64k") != 0) {
            m_skipReason = "mounting a tmpfs failed: " + std::string(strerror(errno));
            return;
        }
        m_mounted = true;
    }
    ~FullDisk() {
        if (m_mounted)
            umount(QFile::encodeName(m_dir.path()).constData());
    }
    bool mounted() const { return m_mounted; }
    const std::string& skipReason() const { return m_skipReason; }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }
    QStringList entries() const { return QDir(m_dir.path()).entryList(QDir::Files | QDir::NoDotAndDotDot); }

private:
    QTemporaryDir m_dir;
    bool m_mounted = false;
    std::string m_skipReason;
};

// A test with the shared recordings ready and a folder of its own for the cuts.
class CutTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(Media::instance().ready()) << "ffmpeg could not make the test recordings";
        ASSERT_TRUE(m_out.isValid());
    }
    QString output(const QString& name) const { return m_out.filePath(name); }
    static EncodingSettings settings(const QString& path, bool reencode = false, int rotation = 0) {
        EncodingSettings result;
        result.filePath = path;
        result.forceReencoding = reencode;
        result.rotation = rotation;
        return result;
    }
    QTemporaryDir m_out;
};

} // namespace cutfixture
