// The playlist table: day headings, choosing items by mouse and keyboard, fitting the columns.
#include "ui/PlaylistView.h"

#include "core/PlaylistItemModel.h"
#include "ui/PlaylistItemDelegate.h"

#include <QContextMenuEvent>
#include <QCursor>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace {

// Column widths come from the texts of this many rows at most: every row of a column has the same
// format, so a long list adds nothing but time.
constexpr int kMaxMeasuredRows = 500;
// The last column (a file name, or the top speed) is not squeezed below this many average characters:
// below that the table scrolls sideways instead.
constexpr int kLastColumnMinimumChars = 10;
// A title elides to no fewer than this many characters: "Dis…" still says what the column is.
constexpr int kTitleMinimumChars = 5;

// Column titles wider than their column break at blanks onto a second line ("Top / speed"); the header is
// two lines high while any does. A column narrower than a word of its title elides the title on one line.
class TitleHeader : public QHeaderView {
public:
    explicit TitleHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
        setDefaultAlignment(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter | Qt::TextWordWrap));
        connect(this, &QHeaderView::sectionResized, this, &TitleHeader::updateLines);
    }

    int oneLineWidth(int section) const { return QHeaderView::sectionSizeFromContents(section).width(); }
    // The width the title needs when it may break at blanks: its widest word.
    int widestWordWidth(int section) const {
        const QString title = model() ? model()->headerData(section, orientation()).toString() : QString();
        int widest = 0;
        for (const QString& word : title.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            widest = std::max(widest, fontMetrics().horizontalAdvance(word));
        return oneLineWidth(section) - fontMetrics().horizontalAdvance(title) + widest;
    }

    // Breaks or elides the titles for the widths they have now.
    void updateLines() {
        bool wordsFit = true;
        bool broken = false;
        for (int section = 0; section < count(); ++section) {
            wordsFit = wordsFit && sectionSize(section) >= widestWordWidth(section);
            broken = broken || sectionSize(section) < oneLineWidth(section);
        }
        // An eliding header would cut a title to one line before it could break.
        setTextElideMode(wordsFit ? Qt::ElideNone : Qt::ElideRight);
        const bool twoLines = wordsFit && broken;
        if (twoLines == m_twoLines)
            return;
        m_twoLines = twoLines;
        headerDataChanged(orientation(), 0, count() - 1); // drops the cached height
    }

protected:
    QSize sectionSizeFromContents(int section) const override {
        QSize size = QHeaderView::sectionSizeFromContents(section);
        if (m_twoLines)
            size.rheight() += fontMetrics().lineSpacing();
        return size;
    }

private:
    bool m_twoLines = false;
};

} // namespace

PlaylistView::PlaylistView(QWidget* parent) : QTableView(parent), m_delegate(new PlaylistItemDelegate(this)) {
    setHorizontalHeader(new TitleHeader(this));
    setItemDelegate(m_delegate);
    m_delegate->setHoveredRow(-1);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setShowGrid(false);
    setWordWrap(false);
    setTextElideMode(Qt::ElideMiddle); // keeps the camera letter and extension of a file name
    setTabKeyNavigation(false);        // Tab leaves the table instead of walking its cells
    setCornerButtonEnabled(false);
    setFrameShape(QFrame::NoFrame);    // the tab widget draws the frame
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    setMouseTracking(true);

    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(PlaylistItemDelegate::itemRowHeight(font()));

    QHeaderView* header = horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionsClickable(false); // no sorting: the lists are in time order
    header->setMinimumSectionSize(PlaylistItemDelegate::kTextMargin * 4);
    header->viewport()->installEventFilter(this); // tooltips of elided titles
    // The user widened or narrowed a column: the last one gives or takes the difference.
    connect(header, &QHeaderView::sectionResized, this, [this](int section) {
        if (m_fittingColumns || !model() || section == model()->columnCount() - 1)
            return;
        m_userSizedColumns = true;
        fitColumns();
    });
}

void PlaylistView::setModel(QAbstractItemModel* model) {
    QItemSelectionModel* previousSelection = selectionModel();
    QTableView::setModel(model);
    // A view makes a new selection model for every model and leaves the old one to its owner: us.
    if (previousSelection && previousSelection != selectionModel())
        previousSelection->deleteLater();
    m_hoveredRow = -1;
    m_delegate->setHoveredRow(-1);
    for (const QMetaObject::Connection& connection : m_modelConnections)
        disconnect(connection);
    m_modelConnections.clear();
    const auto relayout = [this] {
        m_columnNeeds.clear();
        m_userSizedColumns = false;
        layoutRows();
        fitColumns();
    };
    if (model) {
        // The playlist models never change, but a view must not break on one that does.
        m_modelConnections = {connect(model, &QAbstractItemModel::modelReset, this, relayout),
                              connect(model, &QAbstractItemModel::layoutChanged, this, relayout),
                              connect(model, &QAbstractItemModel::rowsInserted, this, relayout),
                              connect(model, &QAbstractItemModel::rowsRemoved, this, relayout)};
    }
    relayout();
}

int PlaylistView::itemOfRow(int row) const {
    if (!model() || row < 0 || row >= model()->rowCount())
        return -1;
    const QVariant item = model()->index(row, 0).data(PlaylistItemModel::ItemIndexRole);
    return item.isValid() ? item.toInt() : -1;
}

bool PlaylistView::isItemRow(int row) const { return itemOfRow(row) >= 0; }

int PlaylistView::rowOfItem(int item) const {
    if (item < 0 || !model())
        return -1;
    if (const auto* playlistModel = qobject_cast<const PlaylistItemModel*>(model()))
        return playlistModel->rowOfItem(item);
    for (int row = 0; row < model()->rowCount(); ++row)
        if (itemOfRow(row) == item)
            return row;
    return -1;
}

int PlaylistView::itemRowFrom(int row, int step) const {
    const int rows = model() ? model()->rowCount() : 0;
    for (; row >= 0 && row < rows; row += step)
        if (isItemRow(row))
            return row;
    return -1;
}

bool PlaylistView::selectItem(int index) {
    const int row = rowOfItem(index);
    if (row < 0)
        return false;
    m_selectingFromCode = true;
    selectionModel()->setCurrentIndex(model()->index(row, 0),
                                      QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_selectingFromCode = false;
    // Show the day heading too when the item is the first of its day.
    if (row > 0 && !isItemRow(row - 1))
        scrollTo(model()->index(row - 1, 0));
    scrollTo(model()->index(row, 0));
    return true;
}

int PlaylistView::selectedItem() const {
    if (!selectionModel())
        return -1;
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : itemOfRow(rows.first().row());
}

void PlaylistView::retranslate() {
    m_columnNeeds.clear();
    if (model() && model()->columnCount() > 0)
        horizontalHeader()->headerDataChanged(Qt::Horizontal, 0, model()->columnCount() - 1);
    fitColumns();
    viewport()->update();
}

QModelIndex PlaylistView::moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers) {
    const QModelIndex next = QTableView::moveCursor(cursorAction, modifiers);
    if (!next.isValid() || isItemRow(next.row()))
        return next;
    // A day heading: go on the way the cursor went (Home lands on the first heading: go down).
    const bool upwards = cursorAction == MoveUp || cursorAction == MovePageUp || cursorAction == MovePrevious ||
                         cursorAction == MoveLeft;
    const int step = upwards ? -1 : 1;
    int row = itemRowFrom(next.row(), step);
    if (row < 0 && isItemRow(currentIndex().row()))
        return currentIndex(); // nothing beyond the heading: stay
    if (row < 0)
        row = itemRowFrom(next.row(), -step);
    return row < 0 ? QModelIndex() : model()->index(row, std::max(0, next.column()));
}

void PlaylistView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    if (m_selectingFromCode || selected.isEmpty())
        return;
    const int item = selectedItem();
    if (item >= 0)
        emit itemChosen(item);
}

void PlaylistView::keyboardSearch(const QString&) {
    // Typing would jump to whatever row starts with the letters, headings included: not wanted here.
}

void PlaylistView::mousePressEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    if (index.isValid() && !isItemRow(index.row())) {
        // A heading keeps the current choice.
        setFocus(Qt::MouseFocusReason);
        event->accept();
        return;
    }
    QTableView::mousePressEvent(event);
}

void PlaylistView::mouseMoveEvent(QMouseEvent* event) {
    setHoveredRow(rowAt(event->pos().y()));
    // Dragging with a button held would choose every item on the way, each starting playback.
    if (event->buttons() != Qt::NoButton) {
        event->accept();
        return;
    }
    QTableView::mouseMoveEvent(event);
}

void PlaylistView::mouseDoubleClickEvent(QMouseEvent* event) {
    const QModelIndex index = indexAt(event->pos());
    if (index.isValid() && !isItemRow(index.row())) {
        event->accept();
        return;
    }
    QTableView::mouseDoubleClickEvent(event);
}

void PlaylistView::leaveEvent(QEvent* event) {
    setHoveredRow(-1);
    QTableView::leaveEvent(event);
}

void PlaylistView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        const int item = itemOfRow(currentIndex().row());
        if (item >= 0) {
            if (selectedItem() != item) {
                m_selectingFromCode = true;
                selectionModel()->select(currentIndex(),
                                         QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
                m_selectingFromCode = false;
            }
            emit itemChosen(item);
        }
        event->accept();
        return;
    }
    QTableView::keyPressEvent(event);
}

void PlaylistView::scrollContentsBy(int dx, int dy) {
    QTableView::scrollContentsBy(dx, dy);
    // The wheel moves the rows under a pointer that stays put.
    if (viewport()->underMouse())
        setHoveredRow(rowAt(viewport()->mapFromGlobal(QCursor::pos()).y()));
}

void PlaylistView::setHoveredRow(int row) {
    if (!isItemRow(row))
        row = -1;
    if (row == m_hoveredRow)
        return;
    const auto updateRow = [this](int r) {
        if (r >= 0)
            viewport()->update(QRect(0, rowViewportPosition(r), viewport()->width(), rowHeight(r)));
    };
    updateRow(m_hoveredRow);
    m_hoveredRow = row;
    m_delegate->setHoveredRow(row);
    updateRow(m_hoveredRow);
}

bool PlaylistView::viewportEvent(QEvent* event) {
    switch (event->type()) {
    case QEvent::Leave:
        setHoveredRow(-1);
        break;
    case QEvent::ToolTip: {
        // The full text of an elided cell, and why an item cannot be played.
        const auto* help = static_cast<QHelpEvent*>(event);
        const QModelIndex index = indexAt(help->pos());
        QStringList tip;
        if (index.isValid() && isItemRow(index.row())) {
            const QString text = index.data().toString();
            const int width = PlaylistItemDelegate::cellWidth(QFontMetricsF(font()), text);
            if (!text.isEmpty() && width > columnWidth(index.column()))
                tip.append(text);
            const QString note = index.data(Qt::ToolTipRole).toString();
            if (!note.isEmpty())
                tip.append(note);
        }
        if (!tip.isEmpty())
            QToolTip::showText(help->globalPos(), tip.join(QLatin1Char('\n')), viewport(), visualRect(index));
        else
            QToolTip::hideText();
        return true;
    }
    default: break;
    }
    return QTableView::viewportEvent(event);
}

bool PlaylistView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == horizontalHeader()->viewport() && event->type() == QEvent::ToolTip && model()) {
        // The whole title of a narrowed column.
        const auto* help = static_cast<QHelpEvent*>(event);
        const int section = horizontalHeader()->logicalIndexAt(help->pos());
        if (section >= 0 && horizontalHeader()->sectionSizeHint(section) > horizontalHeader()->sectionSize(section))
            QToolTip::showText(help->globalPos(), model()->headerData(section, Qt::Horizontal).toString(),
                               horizontalHeader()->viewport());
        else
            QToolTip::hideText();
        return true;
    }
    return QTableView::eventFilter(watched, event);
}

void PlaylistView::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = indexAt(event->pos()); // on the viewport, as the scroll area passes it on
    if (!index.isValid() || !index.data(PlaylistItemModel::RepairableRole).toBool()) {
        QTableView::contextMenuEvent(event);
        return;
    }
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("playlistItemMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const int item = itemOfRow(index.row());
    connect(menu->addAction(tr("Repair…")), &QAction::triggered, this, [this, item] { emit repairRequested(item); });
    menu->popup(event->globalPos());
    event->accept();
}

void PlaylistView::changeEvent(QEvent* event) {
    QTableView::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) // a translator was installed
        retranslate();
    if (event->type() == QEvent::FontChange) {
        m_columnNeeds.clear();
        layoutRows();
        fitColumns();
    }
}

void PlaylistView::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    fitColumns();
}

void PlaylistView::layoutRows() {
    clearSpans();
    verticalHeader()->setDefaultSectionSize(PlaylistItemDelegate::itemRowHeight(font()));
    if (!model())
        return;
    const int columns = model()->columnCount();
    const int dateRowHeight = PlaylistItemDelegate::dateRowHeight(font());
    for (int row = 0; row < model()->rowCount(); ++row) {
        if (isItemRow(row))
            continue;
        if (columns > 1)
            setSpan(row, 0, 1, columns);
        verticalHeader()->resizeSection(row, dateRowHeight);
    }
}

void PlaylistView::measureColumns() {
    const int columns = model() ? model()->columnCount() : 0;
    m_columnNeeds.assign(columns, ColumnNeed{});
    const auto* header = static_cast<const TitleHeader*>(horizontalHeader());
    for (int column = 0; column < columns; ++column) {
        m_columnNeeds[column].header = header->oneLineWidth(column);
        m_columnNeeds[column].headerWord = header->widestWordWidth(column);
    }
    int measured = 0;
    for (int row = 0; row < model()->rowCount() && measured < kMaxMeasuredRows; ++row) {
        if (!isItemRow(row))
            continue;
        ++measured;
        for (int column = 0; column < columns; ++column) {
            const int width = PlaylistItemDelegate::itemCellWidth(font(), model()->index(row, column));
            m_columnNeeds[column].text = std::max(m_columnNeeds[column].text, width);
        }
    }
    // A column without texts (no track: no distance) still shows the start of its title.
    const int titleFloor = fontMetrics().averageCharWidth() * kTitleMinimumChars + 2 * PlaylistItemDelegate::kTextMargin;
    for (ColumnNeed& need : m_columnNeeds)
        need.text = std::max(need.text, std::min(need.header, titleFloor));
    const int lastMinimum =
        fontMetrics().averageCharWidth() * kLastColumnMinimumChars + 2 * PlaylistItemDelegate::kTextMargin;
    if (columns > 0)
        m_columnNeeds.back().minimum = std::min(m_columnNeeds.back().text, lastMinimum);
}

std::vector<int> PlaylistView::fittedWidths(std::vector<ColumnNeed> needs, int available) {
    std::vector<int> widths;
    int total = 0;
    for (const ColumnNeed& need : needs) {
        widths.push_back(std::max(need.text, need.header));
        total += widths.back();
    }
    if (widths.empty())
        return widths;
    if (total > available) {
        // Too wide on one line: the titles break at blanks.
        total = 0;
        for (std::size_t column = 0; column < needs.size(); ++column) {
            needs[column].header = std::min(needs[column].header, needs[column].headerWord);
            widths[column] = std::max(needs[column].text, needs[column].header);
            total += widths[column];
        }
    }
    if (total <= available) {
        widths.back() += available - total;
        return widths;
    }
    // Still too wide. First the last column's texts elide (a file name keeps its ends) down to its minimum...
    int excess = total - available;
    const int lastMinimum = std::max(needs.back().minimum, std::min(widths.back(), needs.back().header));
    const int fromLast = std::min(excess, std::max(0, widths.back() - lastMinimum));
    widths.back() -= fromLast;
    excess -= fromLast;
    // ...then the titles wider than their column's texts elide, in proportion; beyond that the table scrolls
    // sideways.
    int spareInTitles = 0;
    for (const ColumnNeed& need : needs)
        spareInTitles += std::max(0, need.header - need.text);
    const int fromTitles = std::min(excess, spareInTitles);
    for (std::size_t column = 0; column < needs.size() && fromTitles > 0; ++column) {
        const int spare = std::max(0, needs[column].header - needs[column].text);
        const int cut = std::min(spare, (fromTitles * spare + spareInTitles - 1) / spareInTitles);
        widths[column] -= cut;
        excess -= cut;
    }
    if (excess < 0) // rounding up cut a pixel or two too many
        widths.back() -= excess;
    return widths;
}

void PlaylistView::fitColumns() {
    const int columns = model() ? model()->columnCount() : 0;
    if (columns == 0)
        return;
    if (static_cast<int>(m_columnNeeds.size()) != columns)
        measureColumns();
    const int available = viewport()->width();
    std::vector<int> widths;
    if (m_userSizedColumns) {
        // Keep the user's widths; the last column takes what is left.
        int used = 0;
        for (int column = 0; column + 1 < columns; ++column) {
            widths.push_back(columnWidth(column));
            used += widths.back();
        }
        widths.push_back(std::max(m_columnNeeds.back().minimum, available - used));
    } else {
        widths = fittedWidths(m_columnNeeds, available);
    }
    m_fittingColumns = true;
    for (int column = 0; column < columns; ++column)
        setColumnWidth(column, widths[column]);
    m_fittingColumns = false;
    static_cast<TitleHeader*>(horizontalHeader())->updateLines();
}

QString PlaylistView::placeholderText() const {
    if (!model())
        return tr("Open a memory card, a folder or a video file, or drop one here");
    return tr("Nothing in this list");
}

void PlaylistView::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (model() && model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    const QRect area = viewport()->rect().adjusted(16, 16, -16, -16);
    painter.drawText(area, Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, placeholderText());
}
