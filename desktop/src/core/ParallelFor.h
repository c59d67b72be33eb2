// Runs independent jobs over an index range on every core, reporting progress on the calling thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>

// Calls work(i) for every i in [0, count) on up to `threads` threads (0: one per core), the calling thread
// included. Each job writes only its own result slot, so the outcome does not depend on which job ends first.
// onProgress(done) is called on the calling thread with a growing count of finished jobs. When *cancel
// becomes true no new job is started; the function returns after the running ones. The first exception a
// job throws stops the rest and is rethrown here.
void parallelFor(std::size_t count, const std::function<void(std::size_t)>& work,
                 const std::function<void(std::size_t)>& onProgress = {},
                 const std::atomic_bool* cancel = nullptr, unsigned threads = 0);
