// The job runner with real file copies: chains shown as one job, one job at a time. Cancel is tried in the
// real window (MainWindowTest).
#include "ui/JobRunner.h"

#include "core/FileCopier.h"
#include "support/RecordingFixtures.h"
#include "support/TestSupport.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

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

TEST_F(JobRunnerTest, a_chain_is_one_job_that_refuses_another_an_optional_failure_goes_on_a_required_one_ends_it) {
    std::vector<bool> busy;
    QObject::connect(&runner, &JobRunner::busyChanged, [&](bool b) { busy.push_back(b); });
    ASSERT_TRUE(run({copyStep(dir.filePath("missing/first"), true), copyStep(dir.filePath("second"))}));
    EXPECT_FALSE(window.isEnabled());
    QPointer<FileCopier> refused;
    EXPECT_FALSE(run({copyStep(dir.filePath("other"), false, &refused)})) << "one job at a time";
    EXPECT_TRUE(refused.isNull());
    EXPECT_EQ(log.linesContaining("WARN ui.MainWindow - A background operation is already in progress").size(), 1u);
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
