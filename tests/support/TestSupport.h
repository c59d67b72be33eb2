// Helpers shared by the tests: the real NMEA logs, and capturing log lines.
#pragma once

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace testsupport {

// Absolute path of a file under shared/fixtures (for example "nmea/gga-only.nmea").
QString fixturePath(const QString& relative);

// Runs the event loop until the condition holds or the time is up; returns the condition's last value.
// Use it as EXPECT_TRUE(waitUntil(...)): Qt's QTRY_ and QVERIFY macros report nothing to GoogleTest.
bool waitUntil(const std::function<bool()>& condition, int timeoutMs = 5000);

// Collects every log line written while it lives, instead of printing them.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const;
    // Lines whose text contains all of the given fragments.
    std::vector<std::string> linesContaining(const std::string& fragment) const;

private:
    int m_previousLevel;
};

} // namespace testsupport
