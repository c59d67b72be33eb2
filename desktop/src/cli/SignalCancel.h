// Ctrl+C, SIGTERM and SIGHUP cancel the export that runs, for as long as this scope lives.
#pragma once

class BaseEncoder;

// Installs the handlers for the job and restores the previous ones when it goes. A handler only calls the job's
// cancel(), which stores an atomic flag: safe in a signal handler. One job at a time per process.
class SignalCancel {
public:
    explicit SignalCancel(BaseEncoder* job);
    ~SignalCancel();
    SignalCancel(const SignalCancel&) = delete;
    SignalCancel& operator=(const SignalCancel&) = delete;

    // The signal that cancelled the job, 0 when none came.
    static int received();

private:
    using Handler = void (*)(int);
    Handler m_previous[3];
};
