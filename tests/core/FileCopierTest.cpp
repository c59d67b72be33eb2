// The file copier on real files: progress per file, never overwriting, keep on failure, remove on cancel.
#include "core/FileCopier.h"

#include "support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Every signal of one run, in order: "progress N", "done 1", "done 0", "canceled".
struct CopierRecord {
    std::vector<std::string> events;
    explicit CopierRecord(FileCopier& copier) {
        QObject::connect(&copier, &FileCopier::progress, [this](int p) { events.push_back("progress " + std::to_string(p)); });
        QObject::connect(&copier, &FileCopier::done, [this](bool ok) { events.push_back(ok ? "done 1" : "done 0"); });
        QObject::connect(&copier, &FileCopier::canceled, [this] { events.push_back("canceled"); });
    }
};

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
            QFile file(dir.filePath("card/" + name));
            EXPECT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(1000 + i, static_cast<char>('a' + i)));
            commands.emplace_back(file.fileName(), dir.filePath("saved/" + name));
        }
        return commands;
    }

    QStringList saved() const { return QDir(dir.filePath("saved")).entryList(QDir::Files | QDir::Hidden); }

    static QByteArray contents(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir dir;
};

} // namespace

TEST_F(FileCopierTest, an_empty_command_vector_reports_zero_then_done) {
    FileCopier copier;
    CopierRecord record(copier);
    copier.copy({});
    EXPECT_EQ(record.events, (Events{"progress 0", "done 1"}));
}

TEST_F(FileCopierTest, copies_every_file_unchanged_with_progress_after_each) {
    const FileCopierCommandVector commands = makeSources(3);
    FileCopier copier;
    CopierRecord record(copier);
    copier.copy(commands);
    EXPECT_EQ(record.events, (Events{"progress 0", "progress 33", "progress 66", "progress 100", "done 1"}));
    for (const auto& command : commands)
        EXPECT_EQ(contents(command.second), contents(command.first));
}

TEST_F(FileCopierTest, an_existing_destination_stops_the_copy_and_keeps_what_was_copied) {
    const FileCopierCommandVector commands = makeSources(3);
    {
        QFile existing(commands[1].second);
        ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
        existing.write("the user's own file");
    }
    FileCopier copier;
    CopierRecord record(copier);
    copier.copy(commands);
    EXPECT_EQ(record.events, (Events{"progress 0", "progress 33", "done 0"}));
    EXPECT_EQ(contents(commands[0].second), contents(commands[0].first));
    EXPECT_EQ(contents(commands[1].second), "the user's own file");
    EXPECT_FALSE(QFileInfo::exists(commands[2].second));
}

TEST_F(FileCopierTest, a_missing_source_fails) {
    FileCopierCommandVector commands = makeSources(1);
    commands.emplace_back(dir.filePath("card/GONE.MP4"), dir.filePath("saved/GONE.MP4"));
    FileCopier copier;
    CopierRecord record(copier);
    copier.copy(commands);
    EXPECT_EQ(record.events, (Events{"progress 0", "progress 50", "done 0"}));
    EXPECT_EQ(saved(), QStringList{"REC0.MP4"});
}

TEST_F(FileCopierTest, cancel_before_the_first_file_copies_and_deletes_nothing) {
    const FileCopierCommandVector commands = makeSources(2);
    FileCopier copier;
    CopierRecord record(copier);
    copier.cancel();
    copier.copy(commands);
    EXPECT_EQ(record.events, (Events{"progress 0", "canceled"}));
    EXPECT_TRUE(saved().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(commands[0].first));
}

TEST_F(FileCopierTest, cancel_after_two_of_five_files_removes_both_copies) {
    const FileCopierCommandVector commands = makeSources(5);
    FileCopier copier;
    CopierRecord record(copier);
    // The user presses Cancel while the second file is being copied; it finishes first.
    QObject::connect(&copier, &FileCopier::progress, &copier, [&copier](int p) {
        if (p == 40)
            copier.cancel();
    }, Qt::DirectConnection);
    copier.copy(commands);
    EXPECT_EQ(record.events, (Events{"progress 0", "progress 20", "progress 40", "canceled"}));
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
