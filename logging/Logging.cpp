// The sink of the logger and the pieces of the failure record.
#include "logging/Logging.h"

#include <cxxabi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <stdexcept>

namespace logging {

int g_level = DEBUG;

namespace {

const std::map<int, const char*>& levelNames() {
    static const std::map<int, const char*> names = {
        {FATAL, "FATAL"}, {ERROR, "ERROR"}, {WARN, "WARN"}, {INFO, "INFO"}, {DEBUG, "DEBUG"}, {TRACE, "TRACE"}};
    return names;
}

LineWriter g_lineWriter = nullptr;

void writeToStdout(const std::string& line) {
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

std::string timeField() {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm utc{};
    if (!gmtime_r(&seconds, &utc))
        return "invalid time: " + std::to_string(static_cast<long long>(seconds));
    char buffer[256];
    if (std::strftime(buffer, sizeof buffer, "%F %T", &utc) == 0)
        throw std::runtime_error("error occured inside strftime");
    return buffer;
}

} // namespace

void setLevel(int level) { g_level = level; }
int level() { return g_level; }

const char* levelName(int level) {
    const auto found = levelNames().find(level);
    return found == levelNames().end() ? "INVALID" : found->second;
}

void setLineWriter(LineWriter writer) { g_lineWriter = writer; }

void writeRecord(const char* logger, int level, const std::string& message, const char* file, int line,
                 const char* /*function*/) {
    std::ostringstream out;
    out << timeField() << " [" << static_cast<long>(::syscall(SYS_gettid)) << "] " << levelName(level) << ' '
        << (logger && *logger ? logger : "root") << " - " << message << " [" << file << ':' << line << "]\n";
    (g_lineWriter ? g_lineWriter : writeToStdout)(out.str());
}

namespace detail {

std::string demangle(const char* mangledName) {
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> readable(abi::__cxa_demangle(mangledName, nullptr, nullptr, &status),
                                                    std::free);
    return status == 0 && readable ? readable.get() : mangledName;
}

std::string describeCurrentException() {
    try {
        throw;
    } catch (const std::exception& e) {
        return "exception [type=" + demangle(typeid(e).name()) + ", message=" + e.what() + "]";
    } catch (...) {
        return "unknown exception";
    }
}

} // namespace detail
} // namespace logging
