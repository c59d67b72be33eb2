// Small camera-like videos made with the ffmpeg command, and what ffprobe says about a file.
#include "support/GeneratedMedia.h"

#include <QProcess>

#include <cstdio>

namespace testsupport {
namespace {

QString run(const QString& program, const QStringList& arguments, bool* ok = nullptr) {
    QProcess process;
    process.start(program, arguments);
    const bool finished = process.waitForFinished(120000);
    const bool success = finished && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    if (!success)
        std::fprintf(stderr, "%s failed: %s\n", qPrintable(program), process.readAllStandardError().constData());
    if (ok)
        *ok = success;
    return QString::fromUtf8(process.readAllStandardOutput());
}

QStringList csvLines(const QString& text) {
    QStringList lines;
    for (const QString& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        lines << line.trimmed();
    return lines;
}

} // namespace

bool generateVideo(const QString& path, const MediaOptions& media) {
    const QString seconds = QString::number(media.seconds);
    QStringList arguments{"-v", "error", "-y"};
    if (media.withVideo)
        arguments << "-f" << "lavfi" << "-i"
                  << QStringLiteral("%1=size=%2x%3:rate=25").arg(media.pattern).arg(media.width).arg(media.height);
    if (media.sampleRate > 0)
        arguments << "-f" << "lavfi" << "-i" << QStringLiteral("sine=frequency=440:sample_rate=%1").arg(media.sampleRate);
    arguments << "-t" << seconds;
    if (media.withVideo)
        arguments << "-c:v" << "libx264" << "-preset" << "ultrafast" << "-pix_fmt" << "yuv420p" << "-g"
                  << QString::number(media.keyFrameInterval) << "-keyint_min" << QString::number(media.keyFrameInterval)
                  << "-sc_threshold" << "0" << "-b:v" << "300k";
    if (media.sampleRate > 0)
        arguments << "-c:a" << "aac" << "-b:a" << "64k";
    if (media.indexFirst)
        arguments << "-movflags" << "+faststart";
    arguments << path;
    bool ok = false;
    run(QStringLiteral("ffmpeg"), arguments, &ok);
    return ok;
}

std::vector<ProbedStream> probeStreams(const QString& path) {
    std::vector<ProbedStream> streams;
    const QString text = run(QStringLiteral("ffprobe"),
                             {"-v", "error", "-show_entries", "stream=index,codec_type,codec_name,width,height,sample_rate",
                              "-of", "default=nw=1", path});
    for (const QString& line : csvLines(text)) {
        const QString key = line.section(QLatin1Char('='), 0, 0);
        const QString value = line.section(QLatin1Char('='), 1);
        if (key == QLatin1String("index")) {
            streams.emplace_back();
            streams.back().index = value.toInt();
        } else if (streams.empty()) {
            continue;
        } else if (key == QLatin1String("codec_type")) {
            streams.back().type = value;
        } else if (key == QLatin1String("codec_name")) {
            streams.back().codec = value;
        } else if (key == QLatin1String("width")) {
            streams.back().width = value.toInt();
        } else if (key == QLatin1String("height")) {
            streams.back().height = value.toInt();
        } else if (key == QLatin1String("sample_rate")) {
            streams.back().sampleRate = value.toInt();
        }
    }
    return streams;
}

std::vector<ProbedPacket> probePackets(const QString& path) {
    std::vector<ProbedPacket> packets;
    const QString text = run(QStringLiteral("ffprobe"),
                             {"-v", "error", "-show_entries", "packet=stream_index,pts_time,dts_time,duration_time,flags",
                              "-of", "csv=p=0", path});
    for (const QString& line : csvLines(text)) {
        const QStringList fields = line.split(QLatin1Char(','));
        if (fields.size() < 5)
            continue;
        ProbedPacket packet;
        packet.stream = fields[0].toInt();
        packet.pts = fields[1].toDouble();
        packet.dts = fields[2].toDouble();
        packet.duration = fields[3].toDouble();
        packet.key = fields[4].startsWith(QLatin1Char('K'));
        packets.push_back(packet);
    }
    return packets;
}

double probeDuration(const QString& path) {
    bool ok = false;
    const QString text = run(QStringLiteral("ffprobe"),
                             {"-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", path}, &ok);
    bool number = false;
    const double seconds = text.trimmed().toDouble(&number);
    return ok && number ? seconds : -1.0;
}

QString probeFormatName(const QString& path) {
    bool ok = false;
    const QString text = run(QStringLiteral("ffprobe"),
                             {"-v", "error", "-show_entries", "format=format_name", "-of", "default=noprint_wrappers=1:nokey=1", path}, &ok);
    return ok ? text.trimmed() : QString();
}

} // namespace testsupport
