// Playlist tables: rows grouped under date rows, and the track figures shown for each item.
#include "core/PlaylistItemModel.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kEarthRadiusKm = 6371.0088; // mean radius

double greatCircleKm(const TrackPosition& a, const TrackPosition& b) {
    constexpr double kRadiansPerDegree = M_PI / 180.0;
    const double lat1 = a.latitude * kRadiansPerDegree;
    const double lat2 = b.latitude * kRadiansPerDegree;
    const double dLat = lat2 - lat1;
    const double dLon = (b.longitude - a.longitude) * kRadiansPerDegree;
    const double h = std::sin(dLat / 2) * std::sin(dLat / 2) +
                     std::cos(lat1) * std::cos(lat2) * std::sin(dLon / 2) * std::sin(dLon / 2);
    return 2 * kEarthRadiusKm * std::asin(std::min(1.0, std::sqrt(h)));
}

// Calls visit(position) for each fix of the items' tracks inside [from, to].
template <typename Visit>
void forEachPositionIn(const Playlist::RawItems& items, const QDateTime& from, const QDateTime& to, Visit visit) {
    const TrackTime first = trackTimeFromSeconds(from.toSecsSinceEpoch());
    const TrackTime last = trackTimeFromSeconds(to.toSecsSinceEpoch());
    for (const Playlist::RawItemPtr& item : items) {
        if (!item->track)
            continue;
        for (const TrackPosition& position : item->track->positions)
            if (position.time >= first && position.time <= last)
                visit(position);
    }
}

// Numbers with units, aligned to the right so that their digits line up.
bool isFigure(PlaylistItemModel::Column column) {
    return column == PlaylistItemModel::DistanceColumn || column == PlaylistItemModel::TopSpeedColumn;
}

QString durationText(std::int64_t seconds) {
    seconds = std::max<std::int64_t>(0, seconds);
    const QString minutesAndSeconds =
        QStringLiteral("%1:%2").arg(seconds / 60 % 60, 2, 10, QLatin1Char('0')).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return seconds >= 3600 ? QStringLiteral("%1:%2").arg(seconds / 3600).arg(minutesAndSeconds) : minutesAndSeconds;
}

} // namespace

PlaylistItemModel::PlaylistItemModel(std::vector<Summary> summaries, std::vector<Column> columns, QObject* parent)
    : QAbstractItemModel(parent), m_summaries(std::move(summaries)), m_columns(std::move(columns)) {
    m_rowOfItem.reserve(m_summaries.size());
    QDate previousDate;
    for (std::size_t i = 0; i < m_summaries.size(); ++i) {
        const QDate date = m_summaries[i].from.date();
        if (m_rows.empty() || date != previousDate)
            m_rows.push_back({date, -1});
        previousDate = date;
        m_rowOfItem.push_back(static_cast<int>(m_rows.size()));
        m_rows.push_back({date, static_cast<int>(i)});
    }
}

std::optional<double> PlaylistItemModel::distanceKm(const Playlist::RawItems& items, const QDateTime& from,
                                                     const QDateTime& to) {
    std::optional<double> total;
    std::optional<TrackPosition> previous;
    forEachPositionIn(items, from, to, [&](const TrackPosition& position) {
        total = total.value_or(0.0) + (previous ? greatCircleKm(*previous, position) : 0.0);
        previous = position;
    });
    return total;
}

std::optional<double> PlaylistItemModel::topSpeedKmh(const Playlist::RawItems& items, const QDateTime& from,
                                                      const QDateTime& to) {
    std::optional<double> top;
    forEachPositionIn(items, from, to, [&](const TrackPosition& position) {
        if (position.speed)
            top = std::max(top.value_or(0.0), *position.speed);
    });
    return top;
}

QModelIndex PlaylistItemModel::index(int row, int column, const QModelIndex& parent) const {
    if (parent.isValid() || row < 0 || row >= rowCount() || column < 0 || column >= columnCount())
        return {};
    return createIndex(row, column);
}

QModelIndex PlaylistItemModel::parent(const QModelIndex&) const { return {}; }

int PlaylistItemModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int PlaylistItemModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

bool PlaylistItemModel::isDateRow(int row) const {
    return row >= 0 && row < rowCount() && m_rows[row].itemIndex < 0;
}

int PlaylistItemModel::itemIndex(int row) const {
    return row >= 0 && row < rowCount() ? m_rows[row].itemIndex : -1;
}

int PlaylistItemModel::rowOfItem(int itemIndex) const {
    return itemIndex >= 0 && itemIndex < itemCount() ? m_rowOfItem[itemIndex] : -1;
}

QVariant PlaylistItemModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount())
        return {};
    const Row& row = m_rows[index.row()];
    switch (role) {
    case IsDateRowRole: return row.itemIndex < 0;
    case ItemIndexRole: return row.itemIndex;
    case DateRole: return row.date;
    case FromRole: return row.itemIndex < 0 ? QVariant() : QVariant(m_summaries[row.itemIndex].from);
    case ToRole: return row.itemIndex < 0 ? QVariant() : QVariant(m_summaries[row.itemIndex].to);
    case DamagedRole: return row.itemIndex >= 0 && !m_summaries[row.itemIndex].damaged.empty();
    case RepairableRole: {
        if (row.itemIndex < 0)
            return false;
        const Summary& summary = m_summaries[row.itemIndex];
        return summary.damaged.size() == 1 && summary.damaged.front()->mainVideo.fileName() == summary.fileName &&
               summary.damaged.front()->damage == Playlist::Damage::IndexMissing;
    }
    case Qt::ToolTipRole: {
        if (row.itemIndex < 0)
            return {};
        const Summary& summary = m_summaries[row.itemIndex];
        QStringList lines{damageToolTip(summary), timeSourceToolTip(summary.timeSource)};
        lines.removeAll(QString());
        return lines.join(QLatin1Char('\n'));
    }
    case Qt::DisplayRole:
        if (row.itemIndex < 0)
            return index.column() == 0 ? QLocale().toString(row.date, QStringLiteral("dddd, d MMMM yyyy")) : QString();
        return cellText(m_summaries[row.itemIndex], m_columns[index.column()]);
    case Qt::TextAlignmentRole:
        if (row.itemIndex >= 0 && isFigure(m_columns[index.column()]))
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return {};
    default: return {};
    }
}

QString PlaylistItemModel::cellText(const Summary& summary, Column column) const {
    switch (column) {
    case StartColumn: return summary.from.toString(QStringLiteral("HH:mm:ss"));
    case EndColumn: return summary.to.toString(QStringLiteral("HH:mm:ss"));
    case DurationColumn: return durationText(summary.from.secsTo(summary.to));
    case DistanceColumn:
        return summary.distanceKm ? tr("%1 km").arg(*summary.distanceKm, 0, 'f', 1) : QString();
    case TopSpeedColumn:
        return summary.topSpeedKmh ? tr("%1 km/h").arg(std::lround(*summary.topSpeedKmh)) : QString();
    case FileColumn: return summary.fileName;
    }
    return {};
}

QString PlaylistItemModel::damageToolTip(const Summary& summary) const {
    if (summary.damaged.empty())
        return {};
    // A row of one recording says why; a trip or parking period names its recordings.
    if (summary.damaged.size() == 1 && summary.damaged.front()->mainVideo.fileName() == summary.fileName)
        return summary.damaged.front()->damageText();
    QStringList lines{tr("Recordings that cannot be played and are skipped:")};
    for (const Playlist::RawItemPtr& item : summary.damaged)
        lines.append(QStringLiteral("%1: %2").arg(item->mainVideo.fileName(), item->damageText()));
    return lines.join(QLatin1Char('\n'));
}

QString PlaylistItemModel::timeSourceToolTip(Playlist::TimeSource source) const {
    switch (source) {
    case Playlist::TimeSource::None: return {};
    case Playlist::TimeSource::ByFileName: return tr("Time from the file name");
    case Playlist::TimeSource::ByTrack: return tr("Time from the GPS track");
    case Playlist::TimeSource::ByTrackAndOffset:
        return tr("Time from the GPS track, counted back from its first fix to the start of the recording");
    case Playlist::TimeSource::ByPrev: return tr("Time unknown: placed right after the recording before it");
    case Playlist::TimeSource::ByNext: return tr("Time unknown: placed right before the recording after it");
    case Playlist::TimeSource::ByCreationTime: return tr("Time from the creation time stored in the video");
    case Playlist::TimeSource::ByModificationTime:
        return tr("Time from the file's modification time, less the length of the recording");
    }
    return {};
}

QVariant PlaylistItemModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount())
        return {};
    if (role == Qt::TextAlignmentRole && isFigure(m_columns[section]))
        return int(Qt::AlignRight | Qt::AlignVCenter | Qt::TextWordWrap); // above their right-aligned figures; a long title breaks
    return role == Qt::DisplayRole ? QVariant(columnTitle(m_columns[section])) : QVariant();
}

QString PlaylistItemModel::columnTitle(Column column) const {
    switch (column) {
    case StartColumn: return tr("Start");
    case EndColumn: return tr("End");
    case DurationColumn: return tr("Duration");
    case DistanceColumn: return tr("Distance");
    case TopSpeedColumn: return tr("Top speed");
    case FileColumn: return tr("File");
    }
    return {};
}

Qt::ItemFlags PlaylistItemModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    // Date rows are headings: they can be seen but not chosen.
    return isDateRow(index.row()) ? Qt::ItemIsEnabled : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

namespace {

Playlist::RawItems damagedOf(const Playlist::RawItems& items) {
    Playlist::RawItems damaged;
    std::copy_if(items.begin(), items.end(), std::back_inserter(damaged),
                 [](const Playlist::RawItemPtr& item) { return item->isDamaged(); });
    return damaged;
}

std::vector<PlaylistItemModel::Summary> summariesOf(const Playlist::ProcessedItems& items) {
    std::vector<PlaylistItemModel::Summary> summaries;
    summaries.reserve(items.size());
    for (const Playlist::ProcessedItemPtr& item : items) {
        const bool trip = item->kind == Playlist::Trip;
        summaries.push_back({item->from, item->to,
                             trip ? PlaylistItemModel::distanceKm(item->items, item->from, item->to) : std::nullopt,
                             trip ? PlaylistItemModel::topSpeedKmh(item->items, item->from, item->to) : std::nullopt,
                             {}, damagedOf(item->items)});
    }
    return summaries;
}

std::vector<PlaylistItemModel::Summary> summariesOf(const Playlist::RawItems& items) {
    std::vector<PlaylistItemModel::Summary> summaries;
    summaries.reserve(items.size());
    for (const Playlist::RawItemPtr& item : items) {
        const Playlist::RawItems one{item};
        summaries.push_back({item->from, item->to, PlaylistItemModel::distanceKm(one, item->from, item->to),
                             PlaylistItemModel::topSpeedKmh(one, item->from, item->to), item->mainVideo.fileName(),
                             damagedOf(one), item->timeSource});
    }
    return summaries;
}

// Parking periods show no distance or speed.
std::vector<PlaylistItemModel::Column> processedColumns(std::uint32_t kind) {
    if (kind == Playlist::ParkingPeriod)
        return {PlaylistItemModel::StartColumn, PlaylistItemModel::EndColumn, PlaylistItemModel::DurationColumn};
    return {PlaylistItemModel::StartColumn, PlaylistItemModel::EndColumn, PlaylistItemModel::DurationColumn,
            PlaylistItemModel::DistanceColumn, PlaylistItemModel::TopSpeedColumn};
}

} // namespace

PlaylistProcessedItemModel::PlaylistProcessedItemModel(Playlist::ProcessedItems items, std::uint32_t kind,
                                                       QObject* parent)
    : PlaylistItemModel(summariesOf(items), processedColumns(kind), parent), m_items(std::move(items)) {}

Playlist::ProcessedItemPtr PlaylistProcessedItemModel::item(int row) const {
    const int i = itemIndex(row);
    return i < 0 ? nullptr : m_items[i];
}

PlaylistRawItemModel::PlaylistRawItemModel(Playlist::RawItems items, QObject* parent)
    : PlaylistItemModel(summariesOf(items),
                        {StartColumn, EndColumn, DurationColumn, DistanceColumn, TopSpeedColumn, FileColumn}, parent),
      m_items(std::move(items)) {}

Playlist::RawItemPtr PlaylistRawItemModel::item(int row) const {
    const int i = itemIndex(row);
    return i < 0 ? nullptr : m_items[i];
}
