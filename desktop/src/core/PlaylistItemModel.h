// Table models behind the playlist tabs: one row per item, under a date row for each day.
#pragma once

#include "core/Playlist.h"

#include <QAbstractItemModel>
#include <QDate>

#include <optional>
#include <vector>

// Common part of the playlist tables. Rows are either a date row (the day of the items below it) or an
// item row; itemIndex() maps an item row to the position of its item in the list the model was built
// from. Built on the loader's worker thread from the finished playlist and then moved to the GUI thread;
// the items never change afterwards.
class PlaylistItemModel : public QAbstractItemModel {
    Q_OBJECT
public:
    enum Column { StartColumn, EndColumn, DurationColumn, DistanceColumn, TopSpeedColumn, FileColumn };
    enum Role {
        IsDateRowRole = Qt::UserRole + 1, // bool
        ItemIndexRole,                    // int, -1 on a date row
        DateRole,                         // QDate of the row's day
        FromRole,                         // QDateTime start of the item
        ToRole,                           // QDateTime end of the item
        DamagedRole,                      // bool: the item holds a recording that cannot be played
        RepairableRole,                   // bool: the item is one recording whose index was lost
    };

    // What the table shows of one item; figures come from the tracks inside the item's interval.
    struct Summary {
        QDateTime from;
        QDateTime to;
        std::optional<double> distanceKm;
        std::optional<double> topSpeedKmh;
        QString fileName;
        Playlist::RawItems damaged; // its recordings that cannot be played
        Playlist::TimeSource timeSource = Playlist::TimeSource::None; // of a recording; None for trips and parking
    };

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    int itemCount() const { return static_cast<int>(m_summaries.size()); }
    bool isDateRow(int row) const;
    // -1 for a date row or a row out of range.
    int itemIndex(int row) const;
    // The row of an item, or -1.
    int rowOfItem(int itemIndex) const;
    const Summary& summary(int itemIndex) const { return m_summaries[itemIndex]; }

    // Length of a track's path inside [from, to] in km (great-circle), and its highest speed in km/h.
    static std::optional<double> distanceKm(const Playlist::RawItems& items, const QDateTime& from, const QDateTime& to);
    static std::optional<double> topSpeedKmh(const Playlist::RawItems& items, const QDateTime& from, const QDateTime& to);

protected:
    PlaylistItemModel(std::vector<Summary> summaries, std::vector<Column> columns, QObject* parent);

private:
    struct Row {
        QDate date;
        int itemIndex; // -1: the date row of `date`
    };

    QString columnTitle(Column column) const;
    QString cellText(const Summary& summary, Column column) const;
    // Why (some of) the item cannot be played; empty for an item that plays whole.
    QString damageToolTip(const Summary& summary) const;
    // Where a recording's time came from; empty for trips and parking periods.
    QString timeSourceToolTip(Playlist::TimeSource source) const;

    std::vector<Summary> m_summaries;
    std::vector<Column> m_columns;
    std::vector<Row> m_rows;
    std::vector<int> m_rowOfItem;
};

// Trips (with distance and top speed) or parking periods (times only); `kind` says which.
class PlaylistProcessedItemModel : public PlaylistItemModel {
    Q_OBJECT
public:
    PlaylistProcessedItemModel(Playlist::ProcessedItems items, std::uint32_t kind, QObject* parent = nullptr);

    const Playlist::ProcessedItems& items() const { return m_items; }
    // The item of a row, or nullptr on a date row.
    Playlist::ProcessedItemPtr item(int row) const;

private:
    Playlist::ProcessedItems m_items;
};

// Recordings: the event files, or every file.
class PlaylistRawItemModel : public PlaylistItemModel {
    Q_OBJECT
public:
    explicit PlaylistRawItemModel(Playlist::RawItems items, QObject* parent = nullptr);

    const Playlist::RawItems& items() const { return m_items; }
    // The item of a row, or nullptr on a date row.
    Playlist::RawItemPtr item(int row) const;

private:
    Playlist::RawItems m_items;
};
