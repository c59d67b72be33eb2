// Where exports may write: inputs by any name, the card, existing files; and files that take the target's
// place only when whole. The jobs as the main window drives them, with and without the user's permission.
#include "core/ExportTarget.h"
#include "core/encoding/Coder.h"
#include "core/encoding/Remuxer.h"

#include "CutFixture.h"
#include "support/RecordingFixtures.h"
#include "support/TreeSnapshot.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

using exporttarget::Refusal;
using testing::HasSubstr;

namespace {

class ExportTargetTest : public testing::Test {
protected:
    void SetUp() override {
        testsupport::writeFile(path("card/Normal/REC.MP4"), "recording");
        testsupport::writeFile(path("out/old.mp4"), "earlier");
        ::link(QFile::encodeName(path("card/Normal/REC.MP4")).constData(), QFile::encodeName(path("out/hard.MP4")).constData());
        QFile::link(path("card/Normal/REC.MP4"), path("out/soft.MP4"));
    }
    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(ExportTargetTest, refuses_inputs_by_any_name_the_card_below_and_existing_files_unless_allowed) {
    const QStringList inputs{path("card/Normal/REC.MP4")};
    const exporttarget::Permissions card{path("card"), false};
    const exporttarget::Permissions noCard{QString(), false};
    const exporttarget::Permissions overwrite{path("card"), true};
    struct Case {
        QString target;
        exporttarget::Permissions permissions;
        Refusal::Kind expected;
    };
    const std::vector<Case> cases = {
        {path("card/Normal/REC.MP4"), noCard, Refusal::IsInput},
        {path("card/Normal/./../Normal/REC.MP4"), noCard, Refusal::IsInput},
        {path("out/hard.MP4"), overwrite, Refusal::IsInput},
        {path("out/soft.MP4"), overwrite, Refusal::IsInput},
        {path("card/cut.mp4"), card, Refusal::InsideCard},
        {path("card/not/yet/made/cut.mp4"), card, Refusal::InsideCard},
        {path("card/cut.mp4"), noCard, Refusal::None},
        {path("out/old.mp4"), card, Refusal::Exists},
        {path("out/old.mp4"), overwrite, Refusal::None},
        {path("out"), overwrite, Refusal::NotAFile},
        {path("out/new.mp4"), card, Refusal::None},
    };
    for (const Case& c : cases)
        EXPECT_EQ(exporttarget::refusal(c.target, inputs, c.permissions).kind, c.expected) << c.target.toStdString();
    EXPECT_TRUE(exporttarget::folderRefusal(path("card/Normal/saved"), card));
    EXPECT_FALSE(exporttarget::folderRefusal(path("out/saved"), card));
}

// A file that appeared at the target while the export ran is not replaced either.
TEST_F(ExportTargetTest, partial_file_left_or_refused_at_the_end_leaves_the_folder_as_it_was) {
    const auto before = testsupport::snapshot(path("out"));
    {
        PartialFile abandoned(path("out/new.mp4"));
        abandoned.create();
        ASSERT_EQ(::write(abandoned.descriptor(), "half", 4), 4);
    }
    PartialFile refused(path("out/old.mp4"));
    refused.create();
    EXPECT_THROW(refused.commit(false), exporttarget::TargetError);
    refused.discard();
    EXPECT_EQ(testsupport::changedPaths(before, testsupport::snapshot(path("out"))), QStringList());
}

using CutPermissionsTest = cutfixture::CutTest;

// The window hands over the card it loaded and whether the file dialog confirmed replacing.
TEST_F(CutPermissionsTest, both_encoders_refuse_or_replace_as_permitted_and_a_failure_keeps_the_old_file) {
    using namespace cutfixture;
    for (const bool reencode : {false, true}) {
        auto run = [&](const QString& file, exporttarget::Permissions permissions, Playlist::RawItems items) {
            std::unique_ptr<CutEncoder> encoder;
            if (reencode)
                encoder = std::make_unique<Coder>(items, TimeInterval{at(0.5), at(2.0)}, settings(file, true));
            else
                encoder = std::make_unique<Remuxer>(items, TimeInterval{at(0.5), at(2.0)}, settings(file));
            encoder->setPermissions(std::move(permissions));
            EncoderRun events(*encoder);
            EXPECT_EQ(events.endSignals(), 1);
            return std::make_pair(events.doneTrue == 1, encoder->failedOnTarget());
        };
        const Playlist::RawItems items = Media::instance().items();
        testsupport::writeFile(output("old.mp4"), "earlier");
        testsupport::writeFile(output("old.docx"), "earlier");
        const auto before = testsupport::snapshot(m_out.path());
        const auto media = testsupport::snapshot(Media::instance().path(""));

        EXPECT_EQ(run(items[0]->mainVideo.filePath(), {}, items), std::make_pair(false, true)) << reencode;
        EXPECT_EQ(run(output("old.mp4"), {}, items), std::make_pair(false, true)) << reencode;
        EXPECT_EQ(run(output("new.mp4"), {Media::instance().path(""), false}, items), std::make_pair(true, false)) << reencode;
        EXPECT_EQ(run(Media::instance().path("inside.mp4"), {Media::instance().path(""), true}, items),
                  std::make_pair(false, true)) << reencode;
        EXPECT_EQ(run(output("old.docx"), {QString(), true}, items), std::make_pair(false, false)) << reencode;
        EXPECT_EQ(testsupport::changedPaths(before, testsupport::snapshot(m_out.path())), QStringList{"new.mp4"});
        EXPECT_EQ(testsupport::changedPaths(media, testsupport::snapshot(Media::instance().path(""))), QStringList());

        EXPECT_EQ(run(output("old.mp4"), {QString(), true}, items), std::make_pair(true, false)) << reencode;
        EXPECT_GT(testsupport::probeDuration(output("old.mp4")), 1.0);
        QFile::remove(output("old.mp4"));
        QFile::remove(output("new.mp4"));
    }
}
