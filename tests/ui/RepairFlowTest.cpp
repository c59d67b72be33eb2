// "Repair…" from the playlist: a recording with a healthy sibling comes back as a playable copy in the folder the
// user chose; one without a sibling is refused with a reason, and nothing is written.
#include "ui/RepairFlow.h"

#include "support/BoxAnswerer.h"
#include "support/GeneratedMedia.h"
#include "support/RecordingFixtures.h"
#include "support/StripeMedia.h"
#include "support/TestSupport.h"
#include "ui/JobRunner.h"

#include <QDir>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

TEST(RepairFlow, recovers_into_the_chosen_folder_and_refuses_a_recording_without_a_sibling) {
    QTemporaryDir card;
    QTemporaryDir out;
    QDir().mkpath(card.filePath("Normal"));
    const QString sibling = card.filePath("Normal/FILE240614-090000F.MP4");
    const QString damaged = card.filePath("Normal/FILE240614-090100F.MP4");
    const QString lonely = card.filePath("Normal/FILE240614-090200R.MP4");
    testsupport::StripeVideo video;
    testsupport::writeStripeVideo(sibling, video);
    const QByteArray whole = testsupport::readFile(sibling);
    testsupport::writeFile(damaged, whole.left(whole.size() * 7 / 10)); // power lost while writing
    testsupport::writeFile(lonely, whole.left(whole.size() * 7 / 10));

    QWidget window;
    window.show();
    JobRunner jobs(&window);
    int asked = 0;
    FileChoosers choosers;
    choosers.existingDirectory = [&](QWidget*, const QString&, const QString&) { ++asked; return out.path(); };
    RepairFlow flow(&jobs, choosers, &window);
    testsupport::BoxAnswerer boxes(QStringLiteral("OK"));

    flow.repair(lonely);
    ASSERT_TRUE(testsupport::waitUntil([&] { return boxes.texts.size() == 1; }));
    EXPECT_EQ(asked, 0);
    EXPECT_TRUE(QDir(out.path()).isEmpty());

    flow.repair(damaged);
    ASSERT_TRUE(testsupport::waitUntil([&] { return boxes.texts.size() == 2; }, 20000));
    EXPECT_EQ(asked, 1);
    EXPECT_NE(boxes.texts[1].find("FILE240614-090100F.MP4"), std::string::npos) << boxes.texts[1];
    EXPECT_GT(testsupport::probeDuration(out.filePath("FILE240614-090100F.MP4")), 0.0);
    EXPECT_EQ(testsupport::readFile(damaged), whole.left(whole.size() * 7 / 10)); // the card as it was
}
