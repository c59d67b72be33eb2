#include "support/TestSupport.h"

#include "logging/Logging.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QThread>

#include <mutex>

namespace testsupport {
namespace {
std::mutex g_mutex;
std::vector<std::string> g_lines;

void collect(const std::string& line) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.push_back(line);
}
} // namespace

QString fixturePath(const QString& relative) {
    return QDir(QStringLiteral(REELVUE_FIXTURES_DIR)).absoluteFilePath(relative);
}

bool waitUntil(const std::function<bool()>& condition, int timeoutMs) {
    QDeadlineTimer deadline(timeoutMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return condition();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QThread::msleep(5);
    }
    return true;
}

LogCapture::LogCapture() : m_previousLevel(logging::level()) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.clear();
    logging::setLineWriter(&collect);
}

LogCapture::~LogCapture() {
    logging::setLineWriter(nullptr);
    logging::setLevel(m_previousLevel);
}

std::vector<std::string> LogCapture::lines() const {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_lines;
}

std::vector<std::string> LogCapture::linesContaining(const std::string& fragment) const {
    std::vector<std::string> result;
    for (const auto& line : lines())
        if (line.find(fragment) != std::string::npos)
            result.push_back(line);
    return result;
}

} // namespace testsupport
