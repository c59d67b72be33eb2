// The evidence report read back with poppler's pdftotext, pdfinfo and pdfimages.
#include "ui/EvidenceReport.h"

#include "core/evidence/OverviewVideoOverlay.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(60000);
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Two minutes at 10 m/s heading east, 40 files: enough to run the file list over more than one page.
EvidenceSummary summary() {
    EvidenceSummary s;
    s.program = QStringLiteral("Reelvue 1.3");
    s.created = QDateTime(QDate(2024, 5, 2), QTime(9, 0, 0));
    s.interval = {QDateTime(QDate(2024, 5, 1), QTime(10, 0, 0)), QDateTime(QDate(2024, 5, 1), QTime(10, 2, 0))};
    s.placeName = QStringLiteral("Ring road, exit 12");
    s.cardPath = QStringLiteral("/media/card");
    s.cameras = QStringList{"Front", "Rear"};
    s.marks = {s.interval.from.addSecs(30), s.interval.from.addMSecs(95500)};
    for (int second = 0; second <= 120; ++second) {
        TrackPosition fix;
        fix.time = trackTimeFromSeconds(s.interval.from.addSecs(second).toSecsSinceEpoch());
        fix.latitude = 50.087;
        fix.longitude = 14.42 + second * 10.0 / 71500.0;
        fix.speed = 36.0 + (second % 20);
        fix.course = 90.0;
        s.track.push_back(fix);
    }
    for (int i = 0; i < 40; ++i) {
        const QString path = QStringLiteral("data/originals/2024_0501_1000%1_F.MP4").arg(i, 2, 10, QLatin1Char('0'));
        s.files.push_back({path, 100000000 + i,
                           QString::fromLatin1(QCryptographicHash::hash(path.toUtf8(), QCryptographicHash::Sha256).toHex()),
                           i == 39 ? EvidenceSummary::FileKind::Derived : EvidenceSummary::FileKind::Original});
    }
    return s;
}

} // namespace

TEST(EvidenceReport, holds_the_interval_the_moments_their_seconds_and_every_file_with_its_hash) {
    QTemporaryDir dir;
    const EvidenceSummary s = summary();
    const QString pdf = dir.filePath(QStringLiteral("report.pdf"));
    QString error;
    ASSERT_TRUE(writeEvidenceReport(s, pdf, &error)) << error.toStdString();

    const QString text = run(QStringLiteral("pdftotext"), {"-layout", pdf, "-"});
    const QString firstPage = run(QStringLiteral("pdftotext"), {"-layout", "-l", "1", pdf, "-"});
    for (const QString& expected : {QStringLiteral("2024-05-01"), QStringLiteral("10:00:00 - 10:02:00"),
                                    s.placeName, QStringLiteral("Front, Rear"), QStringLiteral("10:00:30"),
                                    QStringLiteral("10:01:35"), QStringLiteral("GPS speed is indicative")})
        EXPECT_TRUE(firstPage.contains(expected)) << expected.toStdString();
    const QString utcOffset = evidence::utcOffsetText(s.interval.from);
    EXPECT_TRUE(text.contains(QStringLiteral("2024-05-01 10:00:00 - 2024-05-01 10:02:00 (%1)").arg(utcOffset)));
    EXPECT_TRUE(text.contains(QStringLiteral("the files under")));
    // Every second of each marked moment +-5 s, and nothing beyond.
    for (const char* second : {"10:00:25", "10:00:35", "10:01:30", "10:01:40"})
        EXPECT_TRUE(text.contains(QStringLiteral("\n") + second) || text.contains(QStringLiteral(" ") + second))
            << second;
    EXPECT_FALSE(text.contains(QStringLiteral("10:00:36")));
    for (const EvidenceSummary::File& file : s.files) {
        EXPECT_TRUE(text.contains(file.path)) << file.path.toStdString();
        EXPECT_TRUE(text.contains(file.sha256)) << file.sha256.toStdString();
    }
    EXPECT_TRUE(text.contains(QStringLiteral("derived")));
    EXPECT_GE(run(QStringLiteral("pdfinfo"), {pdf}).section(QStringLiteral("Pages:"), 1).trimmed().section('\n', 0, 0).toInt(), 5);
    // The map is drawn, not pasted: no picture in the file.
    EXPECT_EQ(run(QStringLiteral("pdfimages"), {"-list", pdf}).split('\n', Qt::SkipEmptyParts).size(), 2) << "header only";
}

TEST(EvidenceReport, uses_the_map_page_picture_and_fails_cleanly_where_it_cannot_write) {
    QTemporaryDir dir;
    EvidenceSummary s = summary();
    QImage map(400, 300, QImage::Format_RGB32);
    map.fill(Qt::darkGreen);
    QBuffer buffer(&s.mapPicture);
    buffer.open(QIODevice::WriteOnly);
    map.save(&buffer, "PNG");
    const QString pdf = dir.filePath(QStringLiteral("map.pdf"));
    ASSERT_TRUE(writeEvidenceReport(s, pdf));
    const QStringList images = run(QStringLiteral("pdfimages"), {"-list", pdf}).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(images.size(), 3) << "header and the map";
    EXPECT_TRUE(images[2].contains(QStringLiteral(" 400   300 "))) << images[2].toStdString();

    QString error;
    const QString nowhere = dir.filePath(QStringLiteral("missing/report.pdf"));
    EXPECT_FALSE(writeEvidenceReport(s, nowhere, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(QFile::exists(nowhere));
}
