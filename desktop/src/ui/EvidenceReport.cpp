// The PDF report of an evidence pack, drawn with QPainter on a QPdfWriter.
#include "ui/EvidenceReport.h"

#include "core/evidence/OverviewVideoOverlay.h"
#include "logging/Logging.h"

#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QPageLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPdfWriter>

#include <algorithm>
#include <cmath>

namespace {

constexpr const char* kLogger = "ui.EvidenceReport";
// 300 dots an inch: lines and text print sharp, and the file stays small.
constexpr int kDotsPerInch = 300;
constexpr double kMarginMm = 15.0;
// Seconds of track shown before and after each marked moment.
constexpr int kSecondsAroundMark = 5;
constexpr double kEarthRadiusM = 6371000.0;
constexpr double kPi = 3.14159265358979323846;

double mm(double millimetres) {
    return millimetres * kDotsPerInch / 25.4;
}

QFont font(double points, bool bold = false, bool mono = false) {
    QFont result(mono ? QStringLiteral("DejaVu Sans Mono") : QStringLiteral("DejaVu Sans"));
    result.setPointSizeF(points);
    result.setBold(bold);
    // No ligatures: "fi" in a path or a word must stay two letters for anyone searching the text.
    result.setStyleStrategy(QFont::PreferNoShaping);
    return result;
}

QString timeText(const QDateTime& time) {
    return time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss ")) + evidence::utcOffsetText(time);
}

// "2024-05-01 10:00:00 - 2024-05-01 10:02:00 (UTC+03:00)"; each end with its own offset when they differ.
QString intervalText(const QDateTime& from, const QDateTime& to) {
    const QString format = QStringLiteral("yyyy-MM-dd HH:mm:ss");
    if (from.offsetFromUtc() != to.offsetFromUtc())
        return QStringLiteral("%1 - %2").arg(timeText(from), timeText(to));
    return QStringLiteral("%1 - %2 (%3)").arg(from.toString(format), to.toString(format), evidence::utcOffsetText(from));
}

QString durationText(qint64 seconds) {
    return seconds >= 60 ? QStringLiteral("%1 min %2 s").arg(seconds / 60).arg(seconds % 60)
                         : QStringLiteral("%1 s").arg(seconds);
}

// A round length for a scale bar: 1, 2 or 5 times a power of ten, at most `limit` metres.
double roundLength(double limit) {
    const double power = std::pow(10.0, std::floor(std::log10(std::max(limit, 1.0))));
    for (double step : {5.0, 2.0, 1.0})
        if (step * power <= limit)
            return step * power;
    return power;
}

class EvidenceReport {
    Q_DECLARE_TR_FUNCTIONS(EvidenceReport)
public:
    EvidenceReport(const EvidenceSummary& summary, QPdfWriter& writer, QPainter& painter)
        : m_summary(summary), m_writer(writer), m_painter(painter),
          m_page(0, 0, painter.device()->width(), painter.device()->height()) {}

    void paint() {
        firstPage();
        newPage();
        mapPage();
        newPage();
        trackTable();
        newPage();
        fileList();
    }

private:
    // Text in the flow of the page, wrapped to its width; a new page when it would not fit.
    void text(const QString& content, const QFont& textFont, const QColor& colour = Qt::black, double indent = 0) {
        m_painter.setFont(textFont);
        const QRectF area(m_page.left() + indent, m_y, m_page.width() - indent, m_page.height());
        QRectF needed = m_painter.boundingRect(area, Qt::TextWordWrap, content);
        if (m_y + needed.height() > m_page.bottom() && m_y > m_page.top()) {
            newPage();
            needed.moveTop(m_y);
        }
        m_painter.setPen(colour);
        m_painter.drawText(QRectF(area.left(), m_y, area.width(), needed.height()), Qt::TextWordWrap, content);
        m_y += needed.height();
    }
    void gap(double millimetres) { m_y += mm(millimetres); }
    void heading(const QString& content) {
        gap(3);
        text(content, font(14, true));
        gap(2);
    }
    void newPage() {
        m_writer.newPage();
        m_y = m_page.top();
    }

    void firstPage() {
        const EvidenceSummary& s = m_summary;
        text(tr("Incident evidence"), font(22, true));
        gap(4);
        const QDateTime& from = s.interval.from;
        const QDateTime& to = s.interval.to;
        const QString sameDayEnd = from.date() == to.date() ? to.toString(QStringLiteral("HH:mm:ss")) : timeText(to);
        const QList<QPair<QString, QString>> facts{
            {tr("Date"), from.toString(QStringLiteral("yyyy-MM-dd"))},
            {tr("Time"), QStringLiteral("%1 - %2 (%3)")
                             .arg(from.toString(QStringLiteral("HH:mm:ss")), sameDayEnd, evidence::utcOffsetText(from))},
            {tr("Place"), s.placeName.isEmpty() ? tr("not given") : s.placeName},
            {tr("Interval"), QStringLiteral("%1, %2").arg(intervalText(from, to), durationText(from.secsTo(to)))},
            {tr("Interval (UTC)"), QStringLiteral("%1 - %2").arg(from.toUTC().toString(Qt::ISODate),
                                                                 to.toUTC().toString(Qt::ISODate))},
            {tr("Cameras"), s.cameras.join(QStringLiteral(", "))},
        };
        for (const auto& [name, value] : facts) {
            text(name, font(10, false), Qt::darkGray);
            text(value, font(14, true));
            gap(2);
        }
        text(tr("Marked moments"), font(10, false), Qt::darkGray);
        if (s.marks.empty())
            text(tr("none"), font(14, true));
        for (std::size_t i = 0; i < s.marks.size(); ++i) {
            const TrackPosition* fix = evidence::fixInForce(s.track, s.marks[i]);
            QString line = QStringLiteral("%1. %2").arg(i + 1).arg(timeText(s.marks[i]));
            if (fix && fix->speed)
                line += QStringLiteral(", %1 %2").arg(std::lround(speedIn(s.speedUnit, *fix->speed)))
                            .arg(QLatin1String(speedUnitName(s.speedUnit)));
            text(line, font(14, true));
        }
        gap(6);
        text(tr("Made by %1 on %2 from %3.").arg(s.program, timeText(s.created), s.cardPath), font(9));
        gap(2);
        text(tr("GPS speed is indicative, not a calibrated measurement. The overview video and the pictures are "
                "derived from the recordings by this program; the files under \"originals\" are byte-identical "
                "copies of the card's files, and the clips are cut from them without re-encoding."),
             font(9), Qt::darkRed);
    }

    void mapPage() {
        heading(tr("Map"));
        const QRectF mapArea(m_page.left(), m_y, m_page.width(), m_page.height() * 0.45);
        const QImage picture = QImage::fromData(m_summary.mapPicture);
        if (!picture.isNull())
            drawPicture(picture, mapArea);
        else
            drawPlainMap(mapArea);
        m_y = mapArea.bottom() + mm(4);
        heading(tr("Speed, %1").arg(QLatin1String(speedUnitName(m_summary.speedUnit))));
        drawSpeedPlot(QRectF(m_page.left(), m_y, m_page.width(), m_page.bottom() - m_y));
    }

    void drawPicture(const QImage& picture, const QRectF& area) {
        const QSizeF size = QSizeF(picture.size()).scaled(area.size(), Qt::KeepAspectRatio);
        m_painter.drawImage(QRectF(area.topLeft(), size), picture);
    }

    // Equirectangular view in metres around the track's middle: true to scale over a town or a road.
    void drawPlainMap(const QRectF& area) {
        m_painter.setPen(QPen(Qt::gray, mm(0.3)));
        m_painter.setBrush(QColor(245, 245, 240));
        m_painter.drawRect(area);
        const TrackPositions& track = m_summary.track;
        if (track.empty()) {
            m_painter.setFont(font(11));
            m_painter.drawText(area, Qt::AlignCenter, tr("No GPS track for this interval."));
            return;
        }
        double minLat = track.front().latitude, maxLat = minLat, minLon = track.front().longitude, maxLon = minLon;
        for (const TrackPosition& fix : track) {
            minLat = std::min(minLat, fix.latitude);
            maxLat = std::max(maxLat, fix.latitude);
            minLon = std::min(minLon, fix.longitude);
            maxLon = std::max(maxLon, fix.longitude);
        }
        const double midLat = (minLat + maxLat) / 2, midLon = (minLon + maxLon) / 2;
        const double metresPerDegree = kEarthRadiusM * kPi / 180.0;
        const double lonFactor = std::cos(midLat * kPi / 180.0);
        // At least 100 m across, so a car standing still is a dot in a readable frame, not a zoom on noise.
        const double spanM = std::max({(maxLat - minLat) * metresPerDegree, (maxLon - minLon) * metresPerDegree * lonFactor, 100.0});
        const QRectF inner = area.adjusted(mm(10), mm(10), -mm(10), -mm(10));
        const double dotsPerMetre = std::min(inner.width(), inner.height()) / spanM;
        auto place = [&](double lat, double lon) {
            return QPointF(inner.center().x() + (lon - midLon) * metresPerDegree * lonFactor * dotsPerMetre,
                           inner.center().y() - (lat - midLat) * metresPerDegree * dotsPerMetre);
        };
        QPainterPath path(place(track.front().latitude, track.front().longitude));
        for (const TrackPosition& fix : track)
            path.lineTo(place(fix.latitude, fix.longitude));
        m_painter.setBrush(Qt::NoBrush);
        m_painter.setPen(QPen(QColor(30, 90, 200), mm(0.8), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        m_painter.drawPath(path);
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(QColor(0, 150, 0));
        m_painter.drawEllipse(place(track.front().latitude, track.front().longitude), mm(1.5), mm(1.5));
        m_painter.setBrush(Qt::black);
        m_painter.drawEllipse(place(track.back().latitude, track.back().longitude), mm(1.5), mm(1.5));
        m_painter.setFont(font(9, true));
        for (std::size_t i = 0; i < m_summary.marks.size(); ++i) {
            const TrackPosition* fix = evidence::fixInForce(track, m_summary.marks[i]);
            if (!fix)
                continue;
            const QPointF at = place(fix->latitude, fix->longitude);
            m_painter.setPen(Qt::NoPen);
            m_painter.setBrush(Qt::red);
            m_painter.drawEllipse(at, mm(1.8), mm(1.8));
            m_painter.setPen(Qt::red);
            m_painter.drawText(at + QPointF(mm(2.5), -mm(1)), QString::number(i + 1));
        }
        // Scale bar, bottom left: a round length near a quarter of the frame.
        const double barM = roundLength(inner.width() / 4 / dotsPerMetre);
        const QPointF barStart(area.left() + mm(6), area.bottom() - mm(6));
        const QPointF barEnd = barStart + QPointF(barM * dotsPerMetre, 0);
        m_painter.setPen(QPen(Qt::black, mm(0.6)));
        m_painter.drawLine(barStart, barEnd);
        m_painter.drawLine(barStart, barStart - QPointF(0, mm(1.5)));
        m_painter.drawLine(barEnd, barEnd - QPointF(0, mm(1.5)));
        m_painter.setFont(font(8));
        m_painter.drawText(barStart - QPointF(0, mm(2.5)),
                           barM >= 1000 ? QStringLiteral("%1 km").arg(barM / 1000) : QStringLiteral("%1 m").arg(barM));
        // North arrow, top right.
        const QPointF tip(area.right() - mm(10), area.top() + mm(6));
        QPainterPath arrow(tip);
        arrow.lineTo(tip + QPointF(mm(2.5), mm(8)));
        arrow.lineTo(tip + QPointF(0, mm(6)));
        arrow.lineTo(tip + QPointF(-mm(2.5), mm(8)));
        arrow.closeSubpath();
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(Qt::black);
        m_painter.drawPath(arrow);
        m_painter.setPen(Qt::black);
        m_painter.setFont(font(10, true));
        m_painter.drawText(QRectF(tip.x() - mm(5), tip.y() + mm(8), mm(10), mm(5)), Qt::AlignCenter, QStringLiteral("N"));
    }

    void drawSpeedPlot(const QRectF& area) {
        const TrackPositions& track = m_summary.track;
        const QDateTime& from = m_summary.interval.from;
        const double seconds = std::max<qint64>(1, from.secsTo(m_summary.interval.to));
        double top = 20.0;
        for (const TrackPosition& fix : track)
            if (fix.speed)
                top = std::max(top, speedIn(m_summary.speedUnit, *fix.speed));
        top = std::ceil(top / 20.0) * 20.0;
        const QRectF plot = area.adjusted(mm(12), mm(2), -mm(2), -mm(8));
        auto place = [&](double second, double speed) {
            return QPointF(plot.left() + second / seconds * plot.width(), plot.bottom() - speed / top * plot.height());
        };
        m_painter.setFont(font(8));
        for (double speed = 0; speed <= top; speed += 20) {
            m_painter.setPen(QPen(QColor(220, 220, 220), mm(0.2)));
            m_painter.drawLine(place(0, speed), place(seconds, speed));
            m_painter.setPen(Qt::black);
            m_painter.drawText(QRectF(area.left(), place(0, speed).y() - mm(2), mm(10), mm(4)),
                               Qt::AlignRight | Qt::AlignVCenter, QString::number(speed));
        }
        for (int i = 0; i <= 4; ++i) {
            const double second = seconds * i / 4;
            m_painter.drawText(QRectF(place(second, 0).x() - mm(10), plot.bottom() + mm(1), mm(20), mm(5)),
                               Qt::AlignCenter, from.addSecs(static_cast<qint64>(second)).toString(QStringLiteral("HH:mm:ss")));
        }
        m_painter.setPen(QPen(Qt::black, mm(0.3)));
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawRect(plot);
        QPainterPath curve;
        bool drawing = false;
        for (const TrackPosition& fix : track) {
            const double second = (trackTimeToSeconds(fix.time) - from.toSecsSinceEpoch());
            if (!fix.speed || second < 0 || second > seconds) {
                drawing = false;
                continue;
            }
            const QPointF point = place(second, speedIn(m_summary.speedUnit, *fix.speed));
            drawing ? curve.lineTo(point) : curve.moveTo(point);
            drawing = true;
        }
        m_painter.setPen(QPen(QColor(30, 90, 200), mm(0.5)));
        m_painter.drawPath(curve);
        m_painter.setFont(font(8, true));
        for (std::size_t i = 0; i < m_summary.marks.size(); ++i) {
            const double second = from.msecsTo(m_summary.marks[i]) / 1000.0;
            m_painter.setPen(QPen(Qt::red, mm(0.4), Qt::DashLine));
            m_painter.drawLine(place(second, 0), place(second, top));
            m_painter.setPen(Qt::red);
            m_painter.drawText(place(second, top) + QPointF(mm(1), mm(4)), QString::number(i + 1));
        }
    }

    void trackTable() {
        heading(tr("Track around the marked moments"));
        if (m_summary.marks.empty()) {
            text(tr("No moments were marked."), font(10));
            return;
        }
        const QString unit = QLatin1String(speedUnitName(m_summary.speedUnit));
        for (std::size_t i = 0; i < m_summary.marks.size(); ++i) {
            const QDateTime& mark = m_summary.marks[i];
            text(tr("Moment %1: %2").arg(i + 1).arg(timeText(mark)), font(11, true));
            text(tableRow({tr("Time"), tr("Latitude"), tr("Longitude"), tr("Speed, %1").arg(unit), tr("Heading")}),
                 font(8, true, true), Qt::darkGray);
            const QDateTime second = mark.addMSecs(-(mark.time().msec()));
            for (int offset = -kSecondsAroundMark; offset <= kSecondsAroundMark; ++offset) {
                const QDateTime moment = second.addSecs(offset);
                const TrackPosition* fix = evidence::fixInForce(m_summary.track, moment);
                QStringList cells{moment.toString(QStringLiteral("HH:mm:ss"))};
                if (fix) {
                    cells << QString::number(fix->latitude, 'f', 6) << QString::number(fix->longitude, 'f', 6)
                          << (fix->speed ? QString::number(speedIn(m_summary.speedUnit, *fix->speed), 'f', 1)
                                         : QStringLiteral("--"))
                          << (fix->course ? QStringLiteral("%1°").arg(std::lround(*fix->course) % 360)
                                          : QStringLiteral("--"));
                } else {
                    cells << tr("no GPS fix");
                }
                const QString row = tableRow(cells);
                text(row, font(8, offset == 0, true), offset == 0 ? Qt::red : Qt::black);
            }
            gap(3);
        }
    }

    // Monospaced columns: the time left-aligned, the numbers right-aligned under their headings.
    static QString tableRow(const QStringList& cells) {
        static const int kWidths[] = {8, 11, 12, 12, 8};
        QString row;
        for (int i = 0; i < cells.size() && i < 5; ++i)
            row += (i == 0 ? cells[i].leftJustified(kWidths[i]) : QStringLiteral("  ") + cells[i].rightJustified(kWidths[i]));
        return row;
    }

    void fileList() {
        heading(tr("Files"));
        text(tr("SHA-256 checksums let anyone check that a file is unchanged (e.g. with sha256sum)."), font(9));
        gap(2);
        for (const EvidenceSummary::File& file : m_summary.files) {
            QString kind;
            switch (file.kind) {
            case EvidenceSummary::FileKind::Original:
                kind = tr("original: byte-identical copy");
                break;
            case EvidenceSummary::FileKind::Clip:
                kind = tr("clip: the camera's pictures, cut without re-encoding");
                break;
            case EvidenceSummary::FileKind::Derived:
                kind = tr("derived: made by this program, not original");
                break;
            }
            text(file.path, font(9, true));
            text(tr("%1 bytes, %2").arg(file.size).arg(kind), font(8), Qt::darkGray, mm(4));
            text(QStringLiteral("SHA-256 ") + file.sha256, font(8, false, true), Qt::black, mm(4));
            gap(1.5);
        }
    }

    const EvidenceSummary& m_summary;
    QPdfWriter& m_writer;
    QPainter& m_painter;
    QRectF m_page;
    double m_y = 0;
};

} // namespace

bool writeEvidenceReport(const EvidenceSummary& summary, const QString& pdfPath, QString* error) {
    auto failed = [&](const QString& reason) {
        LOG_ERROR(kLogger, "Failed to write the report '{}': {}", pdfPath.toStdString(), reason.toStdString());
        QFile::remove(pdfPath);
        if (error)
            *error = reason;
        return false;
    };
    QFile file(pdfPath);
    if (!file.open(QIODevice::WriteOnly))
        return failed(file.errorString());
    {
        QPdfWriter writer(&file);
        writer.setResolution(kDotsPerInch);
        writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                         QMarginsF(kMarginMm, kMarginMm, kMarginMm, kMarginMm), QPageLayout::Millimeter));
        writer.setTitle(QCoreApplication::translate("EvidenceReport", "Incident evidence"));
        writer.setCreator(summary.program);
        QPainter painter;
        if (!painter.begin(&writer))
            return failed(QStringLiteral("QPainter::begin"));
        EvidenceReport(summary, writer, painter).paint();
        painter.end();
    }
    file.close();
    if (file.error() != QFileDevice::NoError)
        return failed(file.errorString());
    LOG_INFO(kLogger, "Report written to '{}'", pdfPath.toStdString());
    return true;
}
