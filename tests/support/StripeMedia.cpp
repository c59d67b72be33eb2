// Generation and reading of stripe-coded test videos.
#include "support/StripeMedia.h"

#include <QColor>
#include <QDir>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <stdexcept>

namespace testsupport {
namespace {
constexpr int kBits = 16;

QString stripeFilter(const StripeVideo& video) {
    // A moving test picture below a dark band that carries the stripe.
    QStringList boxes{QStringLiteral("drawbox=x=0:y=0:w=iw:h=%1:color=0x303030:t=fill").arg(video.height / 4)};
    const int cell = video.width / kBits;
    for (int bit = 0; bit < kBits; ++bit)
        boxes << QStringLiteral("drawbox=x=%1:y=0:w=%2:h=%3:color=white:t=fill:enable='mod(floor((n+%5)/%4),2)'")
                     .arg(bit * cell)
                     .arg(cell)
                     .arg(video.height / 4)
                     .arg(1 << bit)
                     .arg(video.firstFrame);
    return boxes.join(',') + QStringLiteral(",format=yuv420p");
}
} // namespace

void runFfmpeg(const QStringList& arguments) {
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start(QStringLiteral("ffmpeg"), QStringList{"-y", "-nostdin", "-loglevel", "error"} + arguments);
    if (!ffmpeg.waitForFinished(600000) || ffmpeg.exitStatus() != QProcess::NormalExit || ffmpeg.exitCode() != 0)
        throw std::runtime_error("ffmpeg failed: " + ffmpeg.readAll().toStdString());
}

QImage extractFrame(const QString& video, double seconds, const QString& png) {
    runFfmpeg({"-ss", QString::number(seconds), "-i", video, "-frames:v", "1", png});
    return QImage(png).convertToFormat(QImage::Format_Grayscale8);
}

void writeStripeVideo(const QString& path, const StripeVideo& video) {
    QStringList args{"-f", "lavfi", "-i",
                     QStringLiteral("testsrc2=s=%1x%2:r=%3:d=%4")
                         .arg(video.width)
                         .arg(video.height)
                         .arg(video.fps)
                         .arg(video.seconds)};
    if (video.sound)
        args << "-f" << "lavfi" << "-i" << QStringLiteral("sine=frequency=440:sample_rate=48000:duration=%1").arg(video.seconds);
    args << "-vf" << stripeFilter(video) << "-c:v" << "libx264" << "-preset" << "veryfast" << "-crf" << "18"
         << "-g" << QString::number(video.keyFrameInterval) << "-bf" << QString::number(video.bFrames);
    if (video.sound)
        args << "-c:a" << "aac" << "-b:a" << "64k" << "-shortest";
    if (video.fastStart)
        args << "-movflags" << "+faststart";
    args << path;
    runFfmpeg(args);
}

void writeAudioOnly(const QString& path, double seconds) {
    runFfmpeg({"-f", "lavfi", "-i", QStringLiteral("sine=frequency=440:duration=%1").arg(seconds), "-c:a", "aac", path});
}

int readFrameNumber(const QImage& image) {
    if (image.isNull())
        return -1;
    const double cell = static_cast<double>(image.width()) / kBits;
    const int y = image.height() / 8;
    int number = 0;
    for (int bit = 0; bit < kBits; ++bit) {
        const int gray = qGray(image.pixel(static_cast<int>((bit + 0.5) * cell), y));
        if (gray > 0xC0)
            number |= 1 << bit;
        else if (gray > 0x70)
            return -1;  // neither white nor the dark background: not a stripe
    }
    return number;
}

QString sharedMediaDir() {
    static QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/reelvue-media-XXXXXX"));
    return dir.path();
}

QString sharedFrontVideo() {
    static const QString path = [] {
        const QString file = sharedMediaDir() + QStringLiteral("/front.mp4");
        StripeVideo video;
        video.sound = true;
        video.bFrames = 3;
        writeStripeVideo(file, video);
        return file;
    }();
    return path;
}

QString sharedRearVideo() {
    static const QString path = [] {
        const QString file = sharedMediaDir() + QStringLiteral("/rear.mp4");
        StripeVideo video;
        video.width = 256;
        video.height = 144;
        writeStripeVideo(file, video);
        return file;
    }();
    return path;
}

} // namespace testsupport
