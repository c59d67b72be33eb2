// A minimal work-sharing loop: threads take the next index from one atomic counter.
#include "core/ParallelFor.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

void parallelFor(std::size_t count, const std::function<void(std::size_t)>& work,
                 const std::function<void(std::size_t)>& onProgress, const std::atomic_bool* cancel,
                 unsigned threads) {
    if (count == 0)
        return;
    if (threads == 0)
        threads = std::max(1u, std::thread::hardware_concurrency());
    threads = static_cast<unsigned>(std::min<std::size_t>(threads, count));

    std::atomic<std::size_t> next{0};
    std::atomic<std::size_t> done{0};
    std::atomic_bool failed{false};
    std::exception_ptr firstError;
    std::mutex errorMutex;

    auto runJobs = [&](bool reportProgress) {
        for (;;) {
            if (failed || (cancel && *cancel))
                return;
            const std::size_t index = next++;
            if (index >= count)
                return;
            try {
                work(index);
            } catch (...) {
                std::lock_guard<std::mutex> lock(errorMutex);
                if (!firstError)
                    firstError = std::current_exception();
                failed = true;
                return;
            }
            const std::size_t finished = ++done;
            if (reportProgress && onProgress)
                onProgress(finished);
        }
    };

    std::vector<std::thread> helpers;
    helpers.reserve(threads - 1);
    for (unsigned i = 1; i < threads; ++i)
        helpers.emplace_back(runJobs, false);
    runJobs(true);
    for (std::thread& helper : helpers)
        helper.join();
    if (firstError)
        std::rethrow_exception(firstError);
    if (onProgress)
        onProgress(done);
}
