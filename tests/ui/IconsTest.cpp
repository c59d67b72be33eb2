// The application's icons are compiled in and draw at tool-button and launcher sizes.
#include "ui/Icons.h"

#include "support/TestSupport.h"

#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

namespace {
const QStringList kToolIcons{
    "open-device", "open-directory", "open-file", "save-item", "save-evidence", "to-begin", "slow-down", "stop", "play",
    "pause", "speed-up", "to-end", "cycle-play-start", "cycle-play-stop", "save", "cut", "cut-on", "rotate",
    "confirm-cut", "reject-cut", "volume-muted", "volume-medium", "volume-high", "fullscreen", "exit-fullscreen",
    "damaged", "reelvue"};

// Share of the pixels that are not fully transparent.
double coverage(const QImage& image) {
    int painted = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            painted += qAlpha(image.pixel(x, y)) > 0;
    return static_cast<double>(painted) / (image.width() * image.height());
}
} // namespace

TEST(Icons, every_tool_button_icon_draws_something_at_small_and_large_sizes) {
    for (const QString& name : kToolIcons) {
        const QIcon icon = reelvueIcon(name);
        ASSERT_FALSE(icon.isNull()) << name.toStdString();
        for (int size : {16, 24, 48}) {
            const QPixmap pixmap = icon.pixmap(size, size);
            ASSERT_FALSE(pixmap.isNull()) << name.toStdString() << " at " << size;
            EXPECT_EQ(pixmap.size(), QSize(size, size)) << name.toStdString();
            const double painted = coverage(pixmap.toImage().convertToFormat(QImage::Format_ARGB32));
            EXPECT_GT(painted, 0.05) << name.toStdString() << " draws next to nothing at " << size;
            if (name != "reelvue" && name != "cut-on") { // these two are tiles on purpose
                EXPECT_LT(painted, 0.9) << name.toStdString() << " is a filled square at " << size;
            }
        }
    }
}

TEST(Icons, an_unknown_name_gives_a_null_icon_and_a_warning) {
    testsupport::LogCapture log;
    EXPECT_TRUE(reelvueIcon("no-such-icon").isNull());
    EXPECT_EQ(log.linesContaining("No icon named no-such-icon").size(), 1u);
}
