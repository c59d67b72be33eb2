// Runs the window's background jobs one at a time on one worker thread, behind one progress dialog.
//
// Lives on the GUI thread and owns the worker thread, the progress dialog and the job that runs. Playlist
// loading, file copies, track exports and the cut encoders all run on the worker thread, one after another:
// a job is moved there, started by a queued call, and reports through queued signals. Cancel is the one
// direct cross-thread call: the dialog's Cancel calls the job's cancel(), which only raises an atomic flag
// that the job polls. While a job runs the window is disabled except for the progress dialog.
//
// Every job keeps one contract: progress in whole percent, then exactly one of done(true), done(false)
// or canceled(). A run may chain several jobs (the track copy and the video of one cut): the user sees
// them as one job with one progress bar and one Cancel.
//
//   runner.run(tr("Copying status"), {JobRunner::step(copier, [copier, commands] { copier->copy(commands); })},
//              [](const JobRunner::Endings& endings) { ... });
#pragma once

#include <QObject>
#include <QPointer>
#include <QThread>

#include <functional>
#include <vector>

class PlaylistLoader;
class ProgressDialog;
class QWidget;

class JobRunner : public QObject {
    Q_OBJECT
public:
    enum class Ending { Done, Failed, Canceled, NotRun };
    using Endings = std::vector<Ending>; // one per step, in order

    // One job of a run. Build it with step(); the runner owns the job from run() on.
    struct Step {
        QObject* job = nullptr;
        std::function<void()> start;  // called on the worker thread
        std::function<void()> cancel; // called on the GUI thread; only raises the job's flag
        std::function<void(JobRunner*, int run)> connectSignals;
        int weight = 1;        // share of the progress bar
        bool optional = false; // a failure goes on with the next step
    };

    // `window` is disabled while a job runs; the progress dialog is its child.
    explicit JobRunner(QWidget* window);
    ~JobRunner() override; // cancels the running job and waits for the worker thread

    // Any job with progress(int), done(bool), canceled() and cancel().
    template <class Job> static Step step(Job* job, std::function<void()> start, int weight = 1, bool optional = false) {
        Step result{job, std::move(start), [job] { job->cancel(); }, {}, weight, optional};
        result.connectSignals = [job](JobRunner* runner, int run) {
            connect(job, &Job::progress, runner, [runner, run](int percent) { runner->onProgress(run, percent); });
            connect(job, &Job::done, runner, [runner, run](bool ok) { runner->onEnded(run, ok ? Ending::Done : Ending::Failed); });
            connect(job, &Job::canceled, runner, [runner, run] { runner->onEnded(run, Ending::Canceled); });
        };
        return result;
    }
    // The playlist loader ends with loaded(), failed() or canceled(); connect loaded() to keep the result
    // before calling run(): connections are called in order.
    static Step step(PlaylistLoader* loader, std::function<void()> start);

    bool isBusy() const { return !m_dialog.isNull(); }

    // Starts the steps under one progress dialog titled `title`. `finished` is called once with every step's
    // ending, after the dialog has closed and the window is enabled again. A canceled or failed (not optional)
    // step ends the run; the steps after it are NotRun and deleted. False, with a warning, while a job runs.
    bool run(const QString& title, std::vector<Step> steps, std::function<void(const Endings&)> finished);

    // An operation outside the worker thread (the updater's download) shown in the same way.
    bool showOperation(const QString& title, std::function<void()> cancel);
    void setOperationProgress(int percent);
    void closeOperation();

signals:
    void busyChanged(bool busy);

private:
    void onProgress(int run, int percent);
    void onEnded(int run, Ending ending);
    void startStep();
    void cancel();
    bool openDialog(const QString& title);
    void closeDialog();

    QWidget* m_window;
    QThread m_workerThread;
    QPointer<ProgressDialog> m_dialog;
    std::vector<Step> m_steps;
    Endings m_endings;
    std::function<void(const Endings&)> m_finished;
    std::function<void()> m_operationCancel;
    int m_run = 0;      // counts runs, so that a late signal of an earlier run is ignored
    size_t m_current = 0; // index of the running step
    bool m_running = false;
};
