// Drawing the playlist rows: day headings, item cells, selection and hover.
#include "ui/PlaylistItemDelegate.h"

#include "core/PlaylistItemModel.h"
#include "ui/Icons.h"

#include <QApplication>
#include <QDate>
#include <QLocale>
#include <QPainter>

#include <cmath>

namespace {

// Vertical room around the text of an item row: enough for the row to be an easy click target.
constexpr int kItemPadding = 5;
// A day heading sits a little lower than its band's centre, closer to the items it heads.
constexpr int kDateTopPadding = 9;
constexpr int kDateBottomPadding = 5;

QFont boldFont(QFont font) {
    font.setBold(true);
    return font;
}

QColor blend(const QColor& a, const QColor& b, double weightOfB) {
    return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * weightOfB,
                            a.greenF() + (b.greenF() - a.greenF()) * weightOfB,
                            a.blueF() + (b.blueF() - a.blueF()) * weightOfB);
}

QPalette::ColorGroup colorGroupOf(const QStyleOptionViewItem& option) {
    if (!(option.state & QStyle::State_Enabled))
        return QPalette::Disabled;
    return option.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
}

} // namespace

PlaylistItemDelegate::PlaylistItemDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

bool PlaylistItemDelegate::hasDamageMark(const QModelIndex& index) {
    return index.column() == 0 && index.data(PlaylistItemModel::DamagedRole).toBool();
}

int PlaylistItemDelegate::damageMarkSize(const QFont& font) {
    return QFontMetrics(font).height();
}

int PlaylistItemDelegate::itemRowHeight(const QFont& font) {
    return QFontMetrics(font).height() + 2 * kItemPadding;
}

int PlaylistItemDelegate::dateRowHeight(const QFont& font) {
    return QFontMetrics(boldFont(font)).height() + kDateTopPadding + kDateBottomPadding;
}

int PlaylistItemDelegate::cellWidth(const QFontMetricsF& metrics, const QString& text) {
    // Eliding measures in fractions of a pixel: rounding down would elide a text that was measured to fit.
    return static_cast<int>(std::ceil(metrics.horizontalAdvance(text))) + 1 + 2 * kTextMargin;
}

int PlaylistItemDelegate::itemCellWidth(const QFont& font, const QModelIndex& index) {
    const int mark = hasDamageMark(index) ? damageMarkSize(font) + kTextMargin : 0;
    return cellWidth(QFontMetricsF(font), index.data(Qt::DisplayRole).toString()) + mark;
}

QString PlaylistItemDelegate::dateText(const QDate& date, const QLocale& locale) {
    QString text = locale.toString(date, QLocale::LongFormat);
    if (!text.isEmpty())
        text[0] = text[0].toUpper(); // Russian, Polish and Czech name the weekday in lower case
    return text;
}

bool PlaylistItemDelegate::isHovered(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    if (m_hoveredRow)
        return *m_hoveredRow == index.row();
    return option.state & QStyle::State_MouseOver;
}

void PlaylistItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    painter->save();
    if (index.data(PlaylistItemModel::IsDateRowRole).toBool())
        paintDateRow(painter, option, index);
    else
        paintItemCell(painter, option, index);
    painter->restore();
}

void PlaylistItemDelegate::paintDateRow(QPainter* painter, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const {
    const QPalette& palette = option.palette;
    const QPalette::ColorGroup group = colorGroupOf(option);
    const QColor base = palette.color(group, QPalette::Base);
    painter->fillRect(option.rect, blend(base, palette.color(group, QPalette::Window), 0.6));
    painter->setPen(blend(base, palette.color(group, QPalette::Dark), 0.6));
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());

    // Only the first cell carries the text; the view spans it over the whole row.
    if (index.column() != 0)
        return;
    const QFont font = boldFont(option.font);
    const QRect textRect = option.rect.adjusted(kTextMargin, kDateTopPadding, -kTextMargin, -kDateBottomPadding);
    const QString text = dateText(index.data(PlaylistItemModel::DateRole).toDate(), QLocale());
    painter->setFont(font);
    painter->setPen(palette.color(group, QPalette::Text));
    painter->drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(font).elidedText(text, Qt::ElideRight, textRect.width()));
}

void PlaylistItemDelegate::paintItemCell(QPainter* painter, const QStyleOptionViewItem& option,
                                         const QModelIndex& index) const {
    const QPalette& palette = option.palette;
    const QPalette::ColorGroup group = colorGroupOf(option);
    const bool selected = option.state & QStyle::State_Selected;
    const QColor base = palette.color(group, QPalette::Base);
    const QColor highlight = palette.color(group, QPalette::Highlight);

    QColor background = base;
    if (selected)
        background = highlight;
    else if (isHovered(option, index))
        background = blend(base, highlight, 0.15);
    painter->fillRect(option.rect, background);

    const QVariant alignment = index.data(Qt::TextAlignmentRole);
    const Qt::Alignment align =
        alignment.isValid() ? Qt::Alignment(alignment.toInt()) : Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter);
    QRect textRect = option.rect.adjusted(kTextMargin, 0, -kTextMargin, 0);
    if (hasDamageMark(index)) {
        const int side = damageMarkSize(option.font);
        const QRect mark(textRect.left(), option.rect.center().y() - side / 2, side, side);
        reelvueIcon(QStringLiteral("damaged")).paint(painter, mark);
        textRect.setLeft(mark.right() + 1 + kTextMargin);
    }
    const QString text = index.data(Qt::DisplayRole).toString();
    painter->setFont(option.font);
    painter->setPen(palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    painter->drawText(textRect, int(align) | Qt::TextSingleLine,
                      option.fontMetrics.elidedText(text, option.textElideMode, textRect.width()));
}

QSize PlaylistItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    if (index.data(PlaylistItemModel::IsDateRowRole).toBool()) {
        // Narrow on purpose: the heading spans the row and must not widen the first column.
        return {2 * kTextMargin, dateRowHeight(option.font)};
    }
    return {itemCellWidth(option.font, index), itemRowHeight(option.font)};
}
