// "Repair…" of a recording whose index was lost, from the playlist's context menu to the finished copy.
#include "ui/RepairFlow.h"

#include "core/RecordingRepair.h"
#include "logging/Logging.h"
#include "ui/JobRunner.h"

#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QStandardPaths>

#include <memory>

namespace {
constexpr const char* kLogger = "ui.RepairFlow";
}

RepairFlow::RepairFlow(JobRunner* jobs, const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_jobs(jobs), m_choosers(choosers), m_window(window) {}

void RepairFlow::repair(const QString& damagedPath) {
    const std::optional<QString> sibling = RecordingRepair::healthySibling(damagedPath);
    if (!sibling) {
        LOG_WARN(kLogger, "No healthy sibling for {}", damagedPath.toStdString());
        QMessageBox::warning(m_window, tr("Repair"),
                             tr("No playable recording of the same camera lies beside this one, so its pictures "
                                "cannot be recovered."));
        return;
    }
    const QString start = m_lastFolder.isEmpty()
                              ? QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)
                              : m_lastFolder;
    const QString folder = m_choosers.existingDirectory(m_window, tr("Save repaired recording to"), start);
    if (folder.isEmpty())
        return;
    m_lastFolder = folder;

    auto* job = new RecordingRepair(damagedPath, *sibling, folder);
    // What the job says of itself is copied on the worker thread as it ends, before the runner deletes it.
    struct Outcome {
        QString output;
        QString error;
        int pictures = 0;
    };
    auto outcome = std::make_shared<Outcome>();
    outcome->output = job->outputPath();
    connect(job, &RecordingRepair::done, job, [job, outcome] {
        outcome->error = job->errorText();
        outcome->pictures = job->pictures();
    }, Qt::DirectConnection);
    m_jobs->run(tr("Repairing"), {JobRunner::step(job, [job] { job->run(); })},
                [this, outcome](const JobRunner::Endings& endings) {
                    const QString output = QDir::toNativeSeparators(outcome->output);
                    if (endings.front() == JobRunner::Ending::Done) {
                        LOG_INFO(kLogger, "Repaired into {} ({} pictures)", output.toStdString(), outcome->pictures);
                        QMessageBox::information(m_window, tr("Repair"),
                                                 tr("The pictures were recovered into %1 (without sound).").arg(output));
                    } else if (endings.front() == JobRunner::Ending::Failed) {
                        LOG_WARN(kLogger, "Repair failed: {}", outcome->error.toStdString());
                        QMessageBox::warning(m_window, tr("Repair"), tr("Failed to repair: %1").arg(outcome->error));
                    }
                });
}
