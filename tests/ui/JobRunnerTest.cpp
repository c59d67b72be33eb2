// The job runner with real file copies: chains shown as one job, one job at a time, Cancel in a disabled window.
#include "ui/JobRunner.h"

#include "core/FileCopier.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QPointer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>

using testsupport::waitUntil;
using Ending = JobRunner::Ending;

namespace {

class JobRunnerTest : public testing::Test {
protected:
    void SetUp() override {
        testsupport::writeFile(dir.filePath("source"), "recording");
        window.show();
    }

    // A copier of `source` to `to`, as a step of a run.
    JobRunner::Step copyStep(const QString& to, bool optional = false, QPointer<FileCopier>* job = nullptr) {
        auto* copier = new FileCopier;
        if (job)
            *job = copier;
        const FileCopierCommandVector commands{{dir.filePath("source"), to}};
        return JobRunner::step(copier, [copier, commands] { copier->copy(commands); }, 1, optional);
    }

    bool run(std::vector<JobRunner::Step> steps) {
        return runner.run(QStringLiteral("Copying status"), std::move(steps), [this](const JobRunner::Endings& e) {
            endings = e;
            finished += 1;
        });
    }

    testsupport::LogCapture log;
    QTemporaryDir dir;
    QWidget window;
    JobRunner runner{&window};
    JobRunner::Endings endings;
    int finished = 0;
};

} // namespace

TEST_F(JobRunnerTest, a_chain_is_one_job_an_optional_failure_goes_on_a_required_one_ends_the_run) {
    std::vector<bool> busy;
    QObject::connect(&runner, &JobRunner::busyChanged, [&](bool b) { busy.push_back(b); });
    ASSERT_TRUE(run({copyStep(dir.filePath("missing/first"), true), copyStep(dir.filePath("second"))}));
    EXPECT_FALSE(window.isEnabled());
    ASSERT_TRUE(waitUntil([&] { return finished == 1; }));
    EXPECT_EQ(endings, (JobRunner::Endings{Ending::Failed, Ending::Done}));
    EXPECT_EQ(busy, (std::vector<bool>{true, false})) << "one progress window for the whole chain";
    EXPECT_TRUE(QFileInfo::exists(dir.filePath("second")));
    EXPECT_TRUE(window.isEnabled());

    QPointer<FileCopier> notRun;
    ASSERT_TRUE(run({copyStep(dir.filePath("missing/third")), copyStep(dir.filePath("fourth"), false, &notRun)}));
    ASSERT_TRUE(waitUntil([&] { return finished == 2; }));
    EXPECT_EQ(endings, (JobRunner::Endings{Ending::Failed, Ending::NotRun}));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("fourth")));
    EXPECT_TRUE(waitUntil([&] { return notRun.isNull(); })) << "a step that did not run is deleted";
}

TEST_F(JobRunnerTest, while_a_job_runs_no_other_starts_and_cancel_in_its_dialog_reaches_it) {
    // The worker is held up first, so the job is still to start when Cancel is clicked.
    std::atomic<bool> release{false};
    auto* blocker = new QObject;
    blocker->moveToThread(runner.workerThread());
    QMetaObject::invokeMethod(blocker, [&release, blocker] {
        while (!release)
            QThread::msleep(5);
        blocker->deleteLater();
    }, Qt::QueuedConnection);

    ASSERT_TRUE(run({copyStep(dir.filePath("copy"))}));
    QPointer<FileCopier> refused;
    EXPECT_FALSE(run({copyStep(dir.filePath("other"), false, &refused)}));
    EXPECT_TRUE(refused.isNull());
    EXPECT_EQ(log.linesContaining("WARN ui.MainWindow - A background operation is already in progress").size(), 1u);

    auto* cancel = runner.dialog()->findChild<QPushButton*>(QStringLiteral("cancelButton"));
    EXPECT_FALSE(window.isEnabled());
    EXPECT_TRUE(cancel->isEnabled()) << "the window is disabled except for its progress dialog";
    QTest::mouseClick(cancel, Qt::LeftButton);
    release = true;
    ASSERT_TRUE(waitUntil([&] { return finished == 1; }));
    EXPECT_EQ(endings, JobRunner::Endings{Ending::Canceled});
    EXPECT_FALSE(QFileInfo::exists(dir.filePath("copy")));
    EXPECT_TRUE(window.isEnabled());
}
