// The playlist table: choosing items with the mouse and the keyboard, day headings, selecting from code.
#include "ui/PlaylistItemDelegate.h"
#include "ui/PlaylistView.h"

#include "core/PlaylistItemModel.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

Playlist::RawItemPtr recording(int day, const char* from) {
    auto item = std::make_shared<Playlist::RawItem>();
    item->from = QDateTime(QDate(2024, 6, day), QTime::fromString(from, "HH:mm"), Qt::LocalTime);
    item->to = item->from.addSecs(60);
    item->mainVideo = QFileInfo(QStringLiteral("/card/Normal/FILE2406%1-%2F.MP4").arg(day).arg(from));
    return item;
}

Playlist::RawItemPtr damaged(Playlist::RawItemPtr item) {
    auto copy = std::make_shared<Playlist::RawItem>(*item);
    copy->damage = Playlist::Damage::IndexMissing;
    return copy;
}

// Rows: 0 heading 14 June, 1 item 0, 2 item 1 (cannot be played), 3 heading 15 June, 4 item 2, 5 heading 17 June,
// 6 item 3, 7 item 4.
class PlaylistViewTest : public testing::Test {
protected:
    PlaylistViewTest()
        : model({recording(14, "09:00"), damaged(recording(14, "09:01")), recording(15, "18:30"),
                 recording(17, "07:15"), recording(17, "07:16")}) {
        view.setModel(&model);
        view.resize(350, 400);
        view.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    void click(int row) {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, view.visualRect(model.index(row, 1)).center());
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(&view, key, modifiers); }
    std::vector<int> chosen() const {
        std::vector<int> items;
        for (const QList<QVariant>& arguments : choices)
            items.push_back(arguments.at(0).toInt());
        return items;
    }

    PlaylistRawItemModel model;
    PlaylistView view;
    QSignalSpy choices{&view, &PlaylistView::itemChosen};
};

} // namespace

TEST_F(PlaylistViewTest, a_click_chooses_an_item_row_and_a_day_heading_keeps_the_choice) {
    click(2);
    EXPECT_EQ(chosen(), std::vector<int>{1});
    EXPECT_EQ(view.selectedItem(), 1);

    click(3);
    click(0);
    EXPECT_EQ(chosen(), std::vector<int>{1});
    EXPECT_EQ(view.selectedItem(), 1);

    click(2); // already chosen: nothing new
    click(6);
    EXPECT_EQ(chosen(), (std::vector<int>{1, 3}));
}

TEST_F(PlaylistViewTest, arrow_keys_step_over_day_headings) {
    view.setFocus();
    click(1);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    press(Qt::Key_Down);
    EXPECT_EQ(view.selectedItem(), 3);
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    press(Qt::Key_Up);
    press(Qt::Key_Up); // the first item: the heading above is not a stop
    EXPECT_EQ(view.selectedItem(), 0);
    press(Qt::Key_End, Qt::ControlModifier);
    press(Qt::Key_Home, Qt::ControlModifier);
    press(Qt::Key_Return);
    EXPECT_EQ(chosen(), (std::vector<int>{0, 1, 2, 3, 2, 1, 0, 4, 0, 0}));
}

TEST_F(PlaylistViewTest, selects_from_code_without_reporting_a_choice) {
    EXPECT_EQ(view.selectedItem(), -1);
    EXPECT_TRUE(view.selectItem(2));
    EXPECT_EQ(view.selectedItem(), 2);
    EXPECT_TRUE(view.selectionModel()->isRowSelected(4, {}));
    EXPECT_FALSE(view.selectItem(5));
    EXPECT_FALSE(view.selectItem(-1));
    EXPECT_EQ(view.selectedItem(), 2);
    EXPECT_TRUE(choices.isEmpty());

    // A short view scrolls to the chosen item.
    view.resize(350, view.horizontalHeader()->height() + view.rowHeight(0) + view.rowHeight(1) +
                         view.horizontalScrollBar()->sizeHint().height() + 10);
    EXPECT_TRUE(view.selectItem(4));
    const auto rowVisible = [this](int row) {
        return view.rowViewportPosition(row) >= 0 &&
               view.rowViewportPosition(row) + view.rowHeight(row) <= view.viewport()->height();
    };
    EXPECT_TRUE(rowVisible(7));
    EXPECT_FALSE(rowVisible(0));
    EXPECT_TRUE(view.selectItem(0));
    EXPECT_TRUE(rowVisible(0)); // with its heading
    EXPECT_TRUE(rowVisible(1));

    PlaylistView empty;
    EXPECT_FALSE(empty.selectItem(0));
    EXPECT_EQ(empty.selectedItem(), -1);
}

TEST_F(PlaylistViewTest, headings_span_the_table_and_columns_fit_their_texts) {
    EXPECT_EQ(view.columnSpan(0, 0), model.columnCount());
    EXPECT_EQ(view.columnSpan(1, 0), 1);
    EXPECT_GT(view.rowHeight(0), view.rowHeight(1));
    const QFontMetrics metrics(view.font());
    for (int column = PlaylistItemModel::StartColumn; column <= PlaylistItemModel::DurationColumn; ++column)
        EXPECT_GE(view.columnWidth(column), metrics.horizontalAdvance(model.index(1, column).data().toString()));
    // Room for the warning sign before the start of a recording that cannot be played.
    EXPECT_GE(view.columnWidth(0), metrics.horizontalAdvance(model.index(2, 0).data().toString()) + metrics.height());
    int total = 0;
    for (int column = 0; column < model.columnCount(); ++column)
        total += view.columnWidth(column);
    EXPECT_GE(total, view.viewport()->width());
}

TEST_F(PlaylistViewTest, a_recording_whose_index_was_lost_offers_its_repair) {
    QSignalSpy repair(&view, &PlaylistView::repairRequested);
    const auto menuOn = [&](int row) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, view.visualRect(model.index(row, 1)).center());
        QApplication::sendEvent(view.viewport(), &event);
        return view.findChild<QMenu*>(QStringLiteral("playlistItemMenu"));
    };
    EXPECT_EQ(menuOn(1), nullptr); // a playable recording has nothing to repair
    QMenu* menu = menuOn(2);
    ASSERT_NE(menu, nullptr);
    menu->actions().front()->trigger();
    ASSERT_EQ(repair.count(), 1);
    EXPECT_EQ(repair[0][0].toInt(), 1);
    menu->close();
}

TEST(PlaylistItemDelegate, heads_a_day_with_the_long_date_of_the_locale) {
    const QDate day(2024, 6, 14);
    EXPECT_EQ(PlaylistItemDelegate::dateText(day, QLocale(QLocale::English, QLocale::UnitedStates)),
              QStringLiteral("Friday, June 14, 2024"));
    EXPECT_TRUE(PlaylistItemDelegate::dateText(day, QLocale(QLocale::Russian)).startsWith(QStringLiteral("Пятница")));
}

// A table too narrow for its titles on one line breaks them at blanks onto a second line instead of cutting
// them off ("Dur…"): every word of every title is seen whole.
TEST_F(PlaylistViewTest, titles_too_wide_for_a_narrow_table_take_a_second_line_instead_of_eliding) {
    const QFontMetrics metrics(view.horizontalHeader()->font());
    for (const int width : {800, 520, 430}) {
        view.resize(width, 400);
        QApplication::processEvents();
        bool wrapped = false;
        for (int column = 0; column < model.columnCount(); ++column) {
            const QString title = model.headerData(column, Qt::Horizontal).toString();
            const int padding = view.horizontalHeader()->sectionSizeHint(column) - metrics.horizontalAdvance(title);
            wrapped = wrapped || view.columnWidth(column) < metrics.horizontalAdvance(title) + padding;
            for (const QString& word : title.split(QLatin1Char(' ')))
                EXPECT_GE(view.columnWidth(column), metrics.horizontalAdvance(word) + padding)
                    << width << " " << word.toStdString();
        }
        EXPECT_EQ(view.horizontalHeader()->height() >= 2 * metrics.lineSpacing(), wrapped) << width;
    }
}
