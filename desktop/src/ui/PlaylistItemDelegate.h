// Draws the rows of the playlist tables: a bold heading for each day, and the items below it.
#pragma once

#include <QStyledItemDelegate>

class QDate;
class QFontMetricsF;
class QLocale;

// Paints each cell itself rather than through the style, so that a row reads as one band: the selection
// and the hover highlight cover the whole row without grid lines or per-cell focus frames, and date rows
// (PlaylistItemModel::IsDateRowRole) become headings that span the table when the view spans them.
// Item cells show the model's text, elided, in the model's alignment.
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

    // The heading of a day: the locale's long date, starting with a capital letter.
    static QString dateText(const QDate& date, const QLocale& locale);

private:
    void paintDateRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;
    void paintItemCell(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const;
    static bool isHovered(const QStyleOptionViewItem& option, const QModelIndex& index);
};
