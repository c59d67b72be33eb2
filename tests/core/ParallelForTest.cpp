// The work-sharing loop: every index once, progress on the calling thread, failures and cancel.
#include "core/ParallelFor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

TEST(ParallelFor, runs_every_index_exactly_once_and_reports_growing_progress_on_the_caller) {
    std::vector<int> runs(1000, 0);
    std::vector<std::size_t> progress;
    const std::thread::id caller = std::this_thread::get_id();
    bool progressOffCaller = false;
    parallelFor(
        runs.size(), [&](std::size_t i) { ++runs[i]; },
        [&](std::size_t done) {
            progressOffCaller |= std::this_thread::get_id() != caller;
            progress.push_back(done);
        },
        nullptr, 4);
    EXPECT_EQ(std::count(runs.begin(), runs.end(), 1), 1000);
    EXPECT_FALSE(progressOffCaller);
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), 1000u);
}

TEST(ParallelFor, rethrows_the_first_failure_and_stops_taking_work) {
    std::atomic<int> started{0};
    EXPECT_THROW(parallelFor(
                     10000,
                     [&](std::size_t i) {
                         ++started;
                         std::this_thread::sleep_for(std::chrono::microseconds(100));
                         if (i == 3)
                             throw std::runtime_error("broken");
                     },
                     {}, nullptr, 2),
                 std::runtime_error);
    EXPECT_LT(started.load(), 10000);
}

TEST(ParallelFor, raised_cancel_flag_starts_no_work) {
    std::atomic_bool cancel{true};
    int runs = 0;
    parallelFor(100, [&](std::size_t) { ++runs; }, {}, &cancel, 1);
    EXPECT_EQ(runs, 0);
}
