// Letting the event loop run in tests for a while (waitUntil in TestSupport.h waits for a condition).
#pragma once

namespace testsupport {

// Runs the event loop for `ms` milliseconds.
void runEventsFor(int ms);

} // namespace testsupport
