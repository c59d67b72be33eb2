#include "ui/JobRunner.h"

#include "core/BaseEncoder.h"
#include "core/PlaylistLoader.h"
#include "logging/Logging.h"
#include "ui/ProgressDialog.h"

#include <QWidget>

#include <numeric>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
} // namespace

JobRunner::JobRunner(QWidget* window) : QObject(window), m_window(window) {
    m_workerThread.setObjectName(QStringLiteral("MainWindowWorker"));
    m_workerThread.start();
}

JobRunner::~JobRunner() {
    cancel();
    m_workerThread.quit();
    m_workerThread.wait();
    for (Step& step : m_steps) // the running job ended with the thread's event loop; none is left to signal
        delete step.job;
}

JobRunner::Step JobRunner::step(PlaylistLoader* loader, std::function<void()> start) {
    Step result{loader, std::move(start), [loader] { loader->cancel(); }, {}, 1, false};
    result.connectSignals = [loader](JobRunner* runner, int run) {
        connect(loader, &PlaylistLoader::progress, runner, [runner, run](int percent) { runner->onProgress(run, percent); });
        connect(loader, &PlaylistLoader::loaded, runner, [runner, run] { runner->onEnded(run, Ending::Done); });
        connect(loader, &PlaylistLoader::failed, runner, [runner, run] { runner->onEnded(run, Ending::Failed); });
        connect(loader, &PlaylistLoader::canceled, runner, [runner, run] { runner->onEnded(run, Ending::Canceled); });
    };
    return result;
}

bool JobRunner::run(const QString& title, std::vector<Step> steps, std::function<void(const Endings&)> finished) {
    if (!openDialog(title)) {
        for (Step& step : steps)
            delete step.job;
        return false;
    }
    ++m_run;
    m_steps = std::move(steps);
    m_endings.assign(m_steps.size(), Ending::NotRun);
    m_finished = std::move(finished);
    m_current = 0;
    m_running = true;
    for (Step& step : m_steps) {
        step.job->moveToThread(&m_workerThread);
        step.connectSignals(this, m_run);
    }
    startStep();
    return true;
}

void JobRunner::startStep() {
    QMetaObject::invokeMethod(m_steps[m_current].job, m_steps[m_current].start, Qt::QueuedConnection);
}

// Each step fills its share of the bar, so a chain shows as one job.
void JobRunner::onProgress(int run, int percent) {
    if (run != m_run || !m_running)
        return;
    if (qobject_cast<BaseEncoder*>(m_steps[m_current].job))
        LOG_DEBUG(kLogger, "Encoding status: {}/100", percent);
    const auto weightOf = [](int sum, const Step& step) { return sum + step.weight; };
    const int total = std::accumulate(m_steps.begin(), m_steps.end(), 0, weightOf);
    const int before = std::accumulate(m_steps.begin(), m_steps.begin() + m_current, 0, weightOf);
    if (m_dialog && total > 0)
        m_dialog->setProgress((before * 100 + m_steps[m_current].weight * percent) / total);
}

void JobRunner::onEnded(int run, Ending ending) {
    if (run != m_run || !m_running)
        return;
    m_endings[m_current] = ending;
    m_steps[m_current].job->deleteLater(); // on the worker thread, after its last signal
    m_steps[m_current].job = nullptr;
    const bool goOn = ending == Ending::Done || (ending == Ending::Failed && m_steps[m_current].optional);
    if (goOn && m_current + 1 < m_steps.size()) {
        ++m_current;
        startStep();
        return;
    }
    m_running = false;
    for (Step& step : m_steps) // the steps that will not run now
        delete step.job;
    m_steps.clear();
    closeDialog();
    const auto finished = std::move(m_finished);
    m_finished = nullptr;
    if (finished)
        finished(m_endings);
}

// The dialog's Cancel: a direct call into the job running on the worker thread, which only raises its flag.
void JobRunner::cancel() {
    if (m_running && m_current < m_steps.size() && m_steps[m_current].cancel)
        m_steps[m_current].cancel();
    else if (m_operationCancel)
        m_operationCancel();
}

bool JobRunner::showOperation(const QString& title, std::function<void()> cancel) {
    if (!openDialog(title))
        return false;
    m_operationCancel = std::move(cancel);
    return true;
}

void JobRunner::setOperationProgress(int percent) {
    if (m_dialog && m_operationCancel)
        m_dialog->setProgress(percent);
}

void JobRunner::closeOperation() {
    if (!m_operationCancel)
        return;
    m_operationCancel = nullptr;
    closeDialog();
}

bool JobRunner::openDialog(const QString& title) {
    if (m_dialog) {
        LOG_WARN(kLogger, "A background operation is already in progress");
        return false;
    }
    m_dialog = new ProgressDialog(title, m_window);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_dialog, &ProgressDialog::canceled, this, &JobRunner::cancel);
    // Disabling the window disables its child windows too; the dialog is enabled again on its own, as a window
    // may be while its parent is disabled, so that its Cancel works.
    m_window->setEnabled(false);
    m_dialog->setEnabled(true);
    m_dialog->show();
    emit busyChanged(true);
    return true;
}

void JobRunner::closeDialog() {
    if (m_dialog)
        m_dialog->accept(); // close() would ask to cancel, as the close button does
    m_dialog = nullptr;
    m_window->setEnabled(true);
    emit busyChanged(false);
}
