// Ctrl+C, SIGTERM and SIGHUP cancel the export that runs.
#include "cli/SignalCancel.h"

#include "core/BaseEncoder.h"

#include <atomic>
#include <csignal>

namespace {
constexpr int kCancelSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<BaseEncoder*> g_job{nullptr};
std::atomic<int> g_signal{0};

extern "C" void cancelOnSignal(int signal) {
    g_signal = signal;
    if (BaseEncoder* job = g_job.load())
        job->cancel();
}
} // namespace

SignalCancel::SignalCancel(BaseEncoder* job) {
    g_signal = 0;
    g_job = job;
    for (int i = 0; i < 3; ++i)
        m_previous[i] = std::signal(kCancelSignals[i], &cancelOnSignal);
}

SignalCancel::~SignalCancel() {
    for (int i = 0; i < 3; ++i)
        std::signal(kCancelSignals[i], m_previous[i]);
    g_job = nullptr;
}

int SignalCancel::received() { return g_signal.load(); }
