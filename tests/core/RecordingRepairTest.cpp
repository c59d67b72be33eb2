// Repairing a recording whose index was lost: every picture it still holds comes back, in order, into a new
// file in another folder; the card is not touched. ffmpeg decodes the copy (the oracle).
#include "core/Mp4Boxes.h"
#include "core/RecordingRepair.h"

#include "support/RecordingFixtures.h"
#include "support/StripeMedia.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

TEST(RecordingRepair, brings_back_the_pictures_of_a_recording_cut_off_before_its_index) {
    QTemporaryDir card;
    QTemporaryDir out;
    const QString sibling = card.filePath("Normal/FILE240614-090000F.MP4");
    const QString damaged = card.filePath("Normal/FILE240614-090100F.MP4");
    const QString whole = out.filePath("whole.mp4");
    testsupport::StripeVideo video; // H.264 with sound between the pictures, index at the end
    video.sound = true;
    QDir().mkpath(card.filePath("Normal"));
    testsupport::writeStripeVideo(sibling, video);
    video.firstFrame = 1000;
    testsupport::writeStripeVideo(whole, video);
    const QByteArray bytes = testsupport::readFile(whole);
    testsupport::writeFile(damaged, bytes.left(bytes.size() * 7 / 10)); // power lost while writing
    QFile::remove(whole);
    ASSERT_TRUE(hasIndexLost(topLevelBoxes(damaged)));
    ASSERT_EQ(RecordingRepair::healthySibling(damaged), sibling);

    RecordingRepair repair(damaged, sibling, out.path());
    bool ok = false;
    QObject::connect(&repair, &RecordingRepair::done, [&](bool result) { ok = result; });
    repair.run();
    ASSERT_TRUE(ok) << repair.errorText().toStdString();
    EXPECT_EQ(testsupport::readFile(damaged), bytes.left(bytes.size() * 7 / 10)); // the original as it was
    EXPECT_EQ(QDir(out.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"FILE240614-090100F.MP4"});

    // Every picture from the first on, none lost, none out of order.
    testsupport::runFfmpeg({"-i", repair.outputPath(), "-vsync", "0", out.filePath("%04d.png")});
    const QStringList frames = QDir(out.path()).entryList({"*.png"}, QDir::Files, QDir::Name);
    EXPECT_EQ(frames.size(), repair.pictures());
    EXPECT_GT(frames.size(), 60); // of the 120 written, about 70 % reached the card
    for (int i = 0; i < frames.size(); ++i)
        ASSERT_EQ(testsupport::readFrameNumber(QImage(out.filePath(frames[i]))), 1000 + i) << frames[i].toStdString();

    // Never over the copy, never into the card.
    EXPECT_THROW(repair.repair(), RecordingRepair::Failure);
    RecordingRepair intoCard(damaged, sibling, card.filePath("Normal"));
    EXPECT_THROW(intoCard.repair(), RecordingRepair::Failure);
    RecordingRepair healthy(sibling, sibling, card.path());
    EXPECT_THROW(healthy.repair(), RecordingRepair::Failure);
}
