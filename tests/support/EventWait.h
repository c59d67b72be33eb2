// Waiting in tests for something that happens on other threads or later in the event loop.
#pragma once

#include <functional>

namespace testsupport {

// Runs the event loop until `condition` holds or `timeoutMs` passed; returns the last value of `condition`.
bool waitUntil(const std::function<bool()>& condition, int timeoutMs = 5000);

// Runs the event loop for `ms` milliseconds.
void runEventsFor(int ms);

} // namespace testsupport
