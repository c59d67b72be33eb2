// The table of one playlist tab: items grouped under day headings, one item chosen at a time.
#pragma once

#include <QTableView>

#include <vector>

class PlaylistItemDelegate;

// Shows a PlaylistItemModel (or any model with its roles). Whole rows are selected, one at a time; day
// headings span the row and can't be selected: clicks on them are ignored and the keyboard steps over
// them. Columns are fitted to their texts; the last one takes the rest of the width and elides.
//
// itemChosen() reports the user's choice only (a click, a keyboard move onto an item, Enter);
// selectItem() selects from code without reporting it.
//
//   view->setModel(tripItemModel);
//   connect(view, &PlaylistView::itemChosen, window, [=](int item) { play(tripItemModel->items()[item]); });
class PlaylistView : public QTableView {
    Q_OBJECT
public:
    explicit PlaylistView(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;
    void keyboardSearch(const QString& search) override;

    // Selects and scrolls to the row of playlist item `index` (PlaylistItemModel::ItemIndexRole) without
    // emitting itemChosen(); false (and the selection kept) when the model has no such item.
    bool selectItem(int index);
    // The item of the selected row, or -1 when nothing (or a heading) is selected.
    int selectedItem() const;
    // After a language change (done on QEvent::LanguageChange too): titles, day names and texts follow the
    // installed translator and the default locale.
    void retranslate();

    // The row under the pointer, or -1; the delegate highlights it.
    int hoveredRow() const { return m_hoveredRow; }

signals:
    // The user chose the item of this index (ItemIndexRole). Never emitted for a day heading.
    void itemChosen(int index);
    // The user asked for a repaired copy of the item of this index, a recording whose index was lost
    // (PlaylistItemModel::RepairableRole), from the row's context menu.
    void repairRequested(int index);

protected:
    QModelIndex moveCursor(CursorAction cursorAction, Qt::KeyboardModifiers modifiers) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    bool isItemRow(int row) const;
    int itemOfRow(int row) const;
    int rowOfItem(int item) const;
    // The nearest item row from `row` on in steps of `step` (+1 or -1), or -1.
    int itemRowFrom(int row, int step) const;
    // Spans and heights of the day headings, after the model's rows changed.
    void layoutRows();
    // What each column needs, measured from its title and texts.
    struct ColumnNeed {
        int text = 0;        // its widest text
        int header = 0;      // its title on one line
        int headerWord = 0;  // its title broken at blanks: its widest word
        int minimum = 0;     // the last column's least width before the table scrolls
    };
    void measureColumns();
    // Widths that fill `available`: titles take a second line, then elide, and then the last column elides
    // when there is too little room.
    static std::vector<int> fittedWidths(std::vector<ColumnNeed> needs, int available);
    // Column widths from their needs (or the user's widths), the last one taking what is left.
    void fitColumns();
    void setHoveredRow(int row);
    QString placeholderText() const;

    PlaylistItemDelegate* m_delegate; // owned as a child
    std::vector<ColumnNeed> m_columnNeeds; // empty until measured for the current model and font
    bool m_userSizedColumns = false;      // the user dragged a column border: keep the widths
    std::vector<QMetaObject::Connection> m_modelConnections;
    int m_hoveredRow = -1;
    bool m_selectingFromCode = false;
    bool m_fittingColumns = false;
};
