// The encoding settings dialog: widgets, container switching, path validation with its reason under the
// path, the overlay's forced re-encoding, the choices kept for the next cut, and the record it gives.
#include "ui/EncodingSettingsDialog.h"

#include "support/RecordingFixtures.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

namespace {

class EncodingSettingsDialogTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settingsDir.path());
    }
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
    QTemporaryDir m_settingsDir;
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

TEST_F(EncodingSettingsDialogTest, burning_in_the_overlay_forces_reencoding_until_it_is_off_again) {
    EncodingSettingsDialog dialog(nullptr, path("clip.mp4"), false);
    auto* burnIn = child<QCheckBox>(dialog, "burnInOverlayCheckBox");
    auto* reencode = child<QCheckBox>(dialog, "forceEncodingChkBox");
    EXPECT_EQ(burnIn->text(), "Burn in time, speed and position");
    EXPECT_FALSE(burnIn->isChecked());
    EXPECT_FALSE(dialog.settings().burnInOverlay);

    burnIn->setChecked(true);
    EXPECT_TRUE(reencode->isChecked());
    EXPECT_FALSE(reencode->isEnabled());
    EXPECT_TRUE(dialog.settings().burnInOverlay);
    EXPECT_TRUE(dialog.settings().forceReencoding);
    burnIn->setChecked(false); // the user's own choice comes back
    EXPECT_FALSE(reencode->isChecked());
    EXPECT_TRUE(reencode->isEnabled());
}

TEST_F(EncodingSettingsDialogTest, the_line_under_the_path_says_why_save_is_disabled) {
    QDir(m_dir.path()).mkdir("card");
    testsupport::writeFile(path("old.mp4"), "keep me");
    EncodingSettingsDialog dialog(nullptr, path("clip.mp4"), true);
    dialog.setCardFolder(path("card"));
    const struct {
        QString file;
        bool saveEnabled;
        QString note;
    } cases[] = {
        {path("clip.mp4"), true, ""},
        {path("Videos/clip.mp4"), false, "The folder " + path("Videos") + " does not exist."},
        {path("card/clip.mp4"), false, path("card") + " is on the card the recordings come from: nothing is written there."},
        {path("old.mp4"), true, "old.mp4 exists: Save asks before replacing it."},
        {path("clip.avi"), false, "Invalid file extesion (must be: 'mp4' )"},
    };
    for (const auto& c : cases) {
        edit(dialog)->setText(c.file);
        EXPECT_EQ(save(dialog)->isEnabled(), c.saveEnabled) << c.file.toStdString();
        EXPECT_EQ(dialog.pathNote(), c.note) << c.file.toStdString();
    }
}

TEST_F(EncodingSettingsDialogTest, container_camera_reencoding_and_overlay_are_kept_for_the_next_cut) {
    {
        EncodingSettingsDialog first(nullptr, path("a.mp4"), true);
        first.restoreChoices(); // nothing stored yet: the dialog's own defaults
        EXPECT_TRUE(child<QRadioButton>(first, "mp4RadioBtn")->isChecked());
        EXPECT_FALSE(child<QCheckBox>(first, "forceEncodingChkBox")->isChecked());
        child<QRadioButton>(first, "mkvRadioBtn")->setChecked(true);
        child<QRadioButton>(first, "rearCameraRadioBtn")->setChecked(true);
        child<QCheckBox>(first, "burnInOverlayCheckBox")->setChecked(true);
        first.storeChoices();
    }
    EncodingSettingsDialog next(nullptr, path("b.mp4"), true);
    next.restoreChoices();
    EXPECT_EQ(next.filePath(), path("b.mkv"));
    const EncodingSettings settings = next.settings();
    EXPECT_EQ(settings.camera, 1);
    EXPECT_TRUE(settings.burnInOverlay);
    child<QCheckBox>(next, "burnInOverlayCheckBox")->setChecked(false);
    EXPECT_FALSE(child<QCheckBox>(next, "forceEncodingChkBox")->isChecked()) << "forced, not chosen";

    // Without rear recordings the main camera stays.
    EncodingSettingsDialog mainOnly(nullptr, path("c.mp4"), false);
    mainOnly.restoreChoices();
    EXPECT_EQ(mainOnly.settings().camera, 0);
}
