#include "core/TrackFileJob.h"

#include "core/TrackFileReader.h"
#include "logging/Logging.h"

#include <exception>

namespace {
constexpr const char* kLogger = "core.TrackFileJob";
} // namespace

void TrackFileJob::read() {
    emit progress(0);
    try {
        m_positions = TrackFileReader::read(m_path);
    } catch (const std::exception& e) {
        LOG_WARN(kLogger, "Can't read track {}: {}", m_path.toStdString(), e.what());
        m_failure = QString::fromUtf8(e.what());
    }
    if (m_canceled) {
        emit canceled();
        return;
    }
    emit progress(100);
    emit done(m_failure.isEmpty());
}
