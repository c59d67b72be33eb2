// The encoding settings dialog: widgets, container switching, path validation, and the record it gives.
#include "ui/EncodingSettingsDialog.h"

#include "support/RecordingFixtures.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

namespace {

class EncodingSettingsDialogTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(m_dir.isValid()); }
    QString path(const QString& name) const { return m_dir.filePath(name); }

    template <typename T>
    static T* child(const EncodingSettingsDialog& dialog, const char* name) {
        T* widget = dialog.findChild<T*>(QLatin1String(name));
        EXPECT_NE(widget, nullptr) << name;
        return widget;
    }
    static QLineEdit* edit(const EncodingSettingsDialog& dialog) { return child<QLineEdit>(dialog, "filePathEdit"); }
    static QPushButton* save(const EncodingSettingsDialog& dialog) {
        return child<QDialogButtonBox>(dialog, "dialogButtonBox")->button(QDialogButtonBox::Save);
    }

    QTemporaryDir m_dir;
};

} // namespace

TEST_F(EncodingSettingsDialogTest, has_its_widgets_and_gives_the_chosen_settings) {
    EncodingSettingsDialog dialog(nullptr, path("dvr-a-b.mp4"), true);
    EXPECT_EQ(dialog.windowTitle(), "Encoding settings");
    for (const char* name : {"optionsGroupBox", "conteinerGroupBox", "cameraGroupBox", "filePathButton"})
        EXPECT_NE(dialog.findChild<QWidget*>(QLatin1String(name)), nullptr) << name;
    EXPECT_EQ(save(dialog)->text(), "Save");
    EXPECT_TRUE(save(dialog)->isEnabled());
    EXPECT_TRUE(child<QRadioButton>(dialog, "mp4RadioBtn")->isChecked());

    child<QCheckBox>(dialog, "onlyVideoCheckBox")->setChecked(true);
    child<QCheckBox>(dialog, "forceEncodingChkBox")->setChecked(true);
    child<QRadioButton>(dialog, "rearCameraRadioBtn")->setChecked(true);
    const EncodingSettings settings = dialog.settings();
    EXPECT_TRUE(settings.onlyVideo);
    EXPECT_TRUE(settings.forceReencoding);
    EXPECT_EQ(settings.camera, 1);
    EXPECT_EQ(settings.filePath, path("dvr-a-b.mp4"));
    EXPECT_EQ(settings.rotation, 0);
    EXPECT_EQ(dialog.property("filePath").toString(), path("dvr-a-b.mp4"));
}

TEST_F(EncodingSettingsDialogTest, container_switch_rewrites_the_suffix) {
    EncodingSettingsDialog dialog(nullptr, path("clip.MOV"), false);
    EXPECT_TRUE(child<QRadioButton>(dialog, "movRadioBtn")->isChecked());
    child<QRadioButton>(dialog, "mp4RadioBtn")->setChecked(true);
    EXPECT_EQ(dialog.filePath(), path("clip.mp4"));

    edit(dialog)->setText(path("clip"));
    child<QRadioButton>(dialog, "mkvRadioBtn")->setChecked(true);
    EXPECT_EQ(dialog.filePath(), path("clip.mkv"));

    // The check lower-cases the suffix, the switch compares it as written.
    edit(dialog)->setText(path("CLIP.MKV"));
    EXPECT_TRUE(dialog.validationMessage().isEmpty());
    child<QRadioButton>(dialog, "movRadioBtn")->setChecked(true);
    child<QRadioButton>(dialog, "mkvRadioBtn")->setChecked(true);
    EXPECT_EQ(dialog.filePath(), path("CLIP.mkv"));

    // A dot in a folder name is no suffix.
    QDir(m_dir.path()).mkdir("v1.2");
    edit(dialog)->setText(path("v1.2/clip"));
    child<QRadioButton>(dialog, "mp4RadioBtn")->setChecked(true);
    EXPECT_EQ(dialog.filePath(), path("v1.2/clip.mp4"));
}

TEST_F(EncodingSettingsDialogTest, invalid_paths_disable_save_with_their_message) {
    EncodingSettingsDialog dialog(nullptr, QString(), true);
    EXPECT_EQ(dialog.validationMessage(), "File path is empty");
    EXPECT_FALSE(save(dialog)->isEnabled());

    edit(dialog)->setText(path("clip.avi"));
    EXPECT_EQ(dialog.validationMessage(), "Invalid file extesion (must be: 'mp4' )");
    EXPECT_FALSE(save(dialog)->isEnabled());

    edit(dialog)->setText(path("no/such/folder/clip.mp4"));
    EXPECT_EQ(dialog.validationMessage(), "Invalid file path");

    edit(dialog)->setText(path("clip.mp4"));
    EXPECT_TRUE(dialog.validationMessage().isEmpty());
    EXPECT_TRUE(save(dialog)->isEnabled());
}

TEST_F(EncodingSettingsDialogTest, validation_leaves_no_file_behind_and_keeps_an_existing_one) {
    EncodingSettingsDialog dialog(nullptr, path("new.mp4"), true);
    EXPECT_TRUE(dialog.validationMessage().isEmpty());
    EXPECT_FALSE(QFile::exists(path("new.mp4")));

    testsupport::writeFile(path("old.mp4"), "keep me");
    edit(dialog)->setText(path("old.mp4"));
    EXPECT_TRUE(dialog.validationMessage().isEmpty());
    EXPECT_EQ(testsupport::readFile(path("old.mp4")), "keep me");
}

TEST_F(EncodingSettingsDialogTest, unwritable_folder_is_an_invalid_path) {
    const QString folder = path("locked");
    ASSERT_TRUE(QDir(m_dir.path()).mkdir("locked"));
    bool mounted = false;
    if (geteuid() == 0) {
        // Permissions do not stop root: a read-only file system does.
        mounted = mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", MS_RDONLY, "size=16k") == 0;
        if (!mounted)
            GTEST_SKIP() << "root, and mounting a read-only tmpfs failed";
    } else {
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
    }
    EncodingSettingsDialog dialog(nullptr, folder + "/clip.mp4", true);
    EXPECT_EQ(dialog.validationMessage(), "Invalid file path");
    EXPECT_FALSE(save(dialog)->isEnabled());
    EXPECT_TRUE(QDir(folder).entryList(QDir::Files).isEmpty());
    if (mounted)
        umount(QFile::encodeName(folder).constData());
    else
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
