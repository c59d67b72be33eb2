// Draws the rows of the playlist tables: a bold heading for each day, and the items below it.
#pragma once

#include <QStyledItemDelegate>

#include <optional>

class QDate;
class QFontMetricsF;
class QLocale;

// Paints each cell itself rather than through the style, so that a row reads as one band: the selection
// and the hover highlight cover the whole row without grid lines or per-cell focus frames, and date rows
// (PlaylistItemModel::IsDateRowRole) become headings that span the table when the view spans them.
// Item cells show the model's text, elided, in the model's alignment; an item that holds a recording that
// cannot be played (PlaylistItemModel::DamagedRole) has a warning sign before its first text.
class PlaylistItemDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    explicit PlaylistItemDelegate(QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // Heights of the two kinds of rows for a view font.
    static int itemRowHeight(const QFont& font);
    static int dateRowHeight(const QFont& font);
    // Room left of and right of a cell's text; the same as the header's, so that texts line up.
    static constexpr int kTextMargin = 4;
    // The width a cell needs to show `text` whole.
    static int cellWidth(const QFontMetricsF& metrics, const QString& text);
    // The width an item cell needs to show its text and mark whole.
    static int itemCellWidth(const QFont& font, const QModelIndex& index);

    // The heading of a day: the locale's long date, starting with a capital letter.
    static QString dateText(const QDate& date, const QLocale& locale);

    // The row under the pointer (-1: none), for a view that follows whole rows; until a view calls this, the
    // style's mark of the single cell under the pointer is used.
    void setHoveredRow(int row) { m_hoveredRow = row; }

private:
    void paintDateRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;
    void paintItemCell(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;
    bool isHovered(const QStyleOptionViewItem& option, const QModelIndex& index) const;
    // A warning sign before the first text of an item that holds a recording that cannot be played.
    static bool hasDamageMark(const QModelIndex& index);
    static int damageMarkSize(const QFont& font);

    std::optional<int> m_hoveredRow;
};
