// The file copier on real files: progress per file, never overwriting, keep on failure, remove on cancel.
#include "core/FileCopier.h"

#include "support/JobEvents.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using Events = std::vector<std::string>;

class FileCopierTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(QDir(dir.path()).mkpath("card"));
        ASSERT_TRUE(QDir(dir.path()).mkpath("saved"));
    }

    // n source files of distinct contents, each with its destination in "saved".
    FileCopierCommandVector makeSources(int n) {
        FileCopierCommandVector commands;
        for (int i = 0; i < n; ++i) {
            const QString name = QStringLiteral("REC%1.MP4").arg(i);
            testsupport::writeFile(dir.filePath("card/" + name), QByteArray(1000 + i, static_cast<char>('a' + i)));
            commands.emplace_back(dir.filePath("card/" + name), dir.filePath("saved/" + name));
        }
        return commands;
    }

    QStringList saved() const { return QDir(dir.filePath("saved")).entryList(QDir::Files | QDir::Hidden); }

    // Copies on this thread; `prepare` may cancel or hook the copier first.
    static Events copyAll(const FileCopierCommandVector& commands, const std::function<void(FileCopier&)>& prepare = {}) {
        FileCopier copier;
        testsupport::JobEvents record(copier);
        if (prepare)
            prepare(copier);
        copier.copy(commands);
        return record.events;
    }

    QTemporaryDir dir;
};

} // namespace

TEST_F(FileCopierTest, an_empty_command_vector_reports_zero_then_done) {
    EXPECT_EQ(copyAll({}), (Events{"progress 0", "done 1"}));
}

TEST_F(FileCopierTest, copies_every_file_unchanged_with_progress_after_each) {
    const FileCopierCommandVector commands = makeSources(3);
    EXPECT_EQ(copyAll(commands), (Events{"progress 0", "progress 33", "progress 66", "progress 100", "done 1"}));
    for (const auto& command : commands)
        EXPECT_EQ(testsupport::readFile(command.second), testsupport::readFile(command.first));
}

TEST_F(FileCopierTest, an_existing_destination_stops_the_copy_and_keeps_what_was_copied) {
    const FileCopierCommandVector commands = makeSources(3);
    testsupport::writeFile(commands[1].second, "the user's own file");
    EXPECT_EQ(copyAll(commands), (Events{"progress 0", "progress 33", "done 0"}));
    EXPECT_EQ(testsupport::readFile(commands[0].second), testsupport::readFile(commands[0].first));
    EXPECT_EQ(testsupport::readFile(commands[1].second), "the user's own file");
    EXPECT_FALSE(QFileInfo::exists(commands[2].second));
}

TEST_F(FileCopierTest, a_missing_source_fails) {
    FileCopierCommandVector commands = makeSources(1);
    commands.emplace_back(dir.filePath("card/GONE.MP4"), dir.filePath("saved/GONE.MP4"));
    EXPECT_EQ(copyAll(commands), (Events{"progress 0", "progress 50", "done 0"}));
    EXPECT_EQ(saved(), QStringList{"REC0.MP4"});
}

TEST_F(FileCopierTest, cancel_before_the_first_file_copies_and_deletes_nothing) {
    const FileCopierCommandVector commands = makeSources(2);
    EXPECT_EQ(copyAll(commands, [](FileCopier& copier) { copier.cancel(); }), (Events{"progress 0", "canceled"}));
    EXPECT_TRUE(saved().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(commands[0].first));
}

TEST_F(FileCopierTest, cancel_after_two_of_five_files_removes_both_copies) {
    const FileCopierCommandVector commands = makeSources(5);
    // The user presses Cancel while the second file is being copied; it finishes first.
    const Events events = copyAll(commands, [](FileCopier& copier) {
        QObject::connect(&copier, &FileCopier::progress, &copier, [&copier](int p) {
            if (p == 40)
                copier.cancel();
        }, Qt::DirectConnection);
    });
    EXPECT_EQ(events, (Events{"progress 0", "progress 20", "progress 40", "canceled"}));
    EXPECT_TRUE(saved().isEmpty()) << saved().join(' ').toStdString();
    for (const auto& command : commands)
        EXPECT_TRUE(QFileInfo::exists(command.first)); // the originals are never touched
}

TEST_F(FileCopierTest, runs_on_a_worker_thread_from_a_queued_call_by_name) {
    const FileCopierCommandVector commands = makeSources(2);
    QThread worker;
    worker.start();
    auto* copier = new FileCopier;
    copier->moveToThread(&worker);
    QObject::connect(&worker, &QThread::finished, copier, &QObject::deleteLater);
    std::vector<int> progress;
    std::vector<bool> results;
    QObject context;
    QObject::connect(copier, &FileCopier::progress, &context, [&progress](int p) { progress.push_back(p); });
    QObject::connect(copier, &FileCopier::done, &context, [&results](bool ok) { results.push_back(ok); });
    EXPECT_TRUE(QMetaObject::invokeMethod(copier, "copy", Qt::QueuedConnection, Q_ARG(FileCopierCommandVector, commands)));
    EXPECT_TRUE(testsupport::waitUntil([&] { return !results.empty(); }, 10000));
    worker.quit();
    worker.wait();
    EXPECT_EQ(results, std::vector<bool>{true});
    EXPECT_EQ(progress, (std::vector<int>{0, 50, 100}));
    EXPECT_EQ(saved(), (QStringList{"REC0.MP4", "REC1.MP4"}));
}

TEST_F(FileCopierTest, copies_keep_the_modification_times_and_failures_say_why) {
    FileCopierCommandVector commands = makeSources(2);
    const QDateTime recorded(QDate(2024, 6, 14), QTime(9, 1, 0));
    for (const auto& command : commands) {
        QFile file(command.first);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(recorded, QFileDevice::FileModificationTime));
    }
    EXPECT_EQ(copyAll(commands).back(), "done 1");
    for (const auto& command : commands)
        EXPECT_EQ(QFileInfo(command.second).lastModified(), recorded) << command.second.toStdString();

    FileCopier copier;
    testsupport::JobEvents record(copier);
    copier.copy({{commands[0].first, dir.filePath("saved/no/such/folder/REC0.MP4")}});
    EXPECT_EQ(record.endings(), std::vector<std::string>{"done 0"});
    EXPECT_NE(copier.failureReason().indexOf("No such file or directory"), -1) << copier.failureReason().toStdString();
    EXPECT_TRUE(copier.failedOnTarget());
}

TEST_F(FileCopierTest, refuses_to_copy_over_a_source_or_into_the_card_before_copying_anything) {
    const FileCopierCommandVector commands = makeSources(2);
    const std::vector<FileCopierCommandVector> refused = {
        {commands[0], {commands[1].first, dir.filePath("card/REC1 copy.MP4")}},   // into the card
        {commands[0], {commands[1].first, dir.filePath("card/../card/REC0.MP4")}}, // over a source
    };
    for (const FileCopierCommandVector& run : refused) {
        const Events events = copyAll(run, [this](FileCopier& copier) { copier.setPermissions({dir.filePath("card"), false}); });
        EXPECT_EQ(events, (Events{"progress 0", "done 0"}));
        EXPECT_TRUE(saved().isEmpty());
    }
    EXPECT_EQ(testsupport::readFile(commands[0].first), QByteArray(1000, 'a'));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("card/REC1 copy.MP4")));
}
