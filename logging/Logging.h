// The program's logger: named loggers, one process-wide level, {fmt} messages, one line a record on stdout.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <exception>
#include <sstream>
#include <string>
#include <typeinfo>

namespace logging {

enum Level : int { FATAL = 0, ERROR = 1, WARN = 2, INFO = 3, DEBUG = 4, TRACE = 5 };

void setLevel(int level);
int level();

// True when a record of this level is produced; call sites check it before any other work.
inline bool isEnabled(int recordLevel) {
    extern int g_level;
    return recordLevel <= g_level;
}

// "FATAL" .. "TRACE", or "INVALID" for any other value.
const char* levelName(int level);

// The sink: writes one finished line to standard output and flushes it. May throw.
void writeRecord(const char* logger, int level, const std::string& message, const char* file, int line,
                 const char* function);

// Where the sink's lines go; tests replace it. nullptr restores standard output.
using LineWriter = void (*)(const std::string& line);
void setLineWriter(LineWriter writer);

namespace detail {

std::string demangle(const char* mangledName);
std::string describeCurrentException();

template <typename T>
void describeArgument(std::ostringstream& out, const T& value) {
    out << '[' << demangle(typeid(T).name()) << "] ";
    try {
        out << fmt::format("{}", value);
    } catch (...) {
        out << "<unprintable>";
    }
}

template <typename... Args>
void reportFailure(const char* stage, const char* file, int line, const char* function, const char* logger,
                   int level, const char* format, const Args&... args) noexcept {
    try {
        std::ostringstream out;
        out << describeCurrentException() << " on [stage=" << stage << "][logger=" << logger
            << "][level=" << levelName(level) << "]\n[format=" << format << "](";
        const char* separator = "";
        ((out << separator, describeArgument(out, args), separator = ", "), ...);
        (void)separator;
        out << ')';
        writeRecord("", FATAL, out.str(), file, line, function);
    } catch (...) {
        // Nothing more can be done when even the failure record cannot be written.
    }
}

} // namespace detail

// The one logging entry. Formatting and writing are guarded: an exception never reaches the caller,
// it becomes a FATAL record of the logger "root" describing what failed.
//   logging::log(__FILE__, __LINE__, __func__, "core.Playlist", logging::INFO, "Found {} files", n);
template <typename... Args>
void log(const char* file, int line, const char* function, const char* logger, int level, const char* format,
         const Args&... args) noexcept {
    std::string message;
    try {
        message = fmt::vformat(format, fmt::make_format_args(args...));
    } catch (...) {
        detail::reportFailure("formatting log message", file, line, function, logger, level, format, args...);
        return;
    }
    try {
        writeRecord(logger, level, message, file, line, function);
    } catch (...) {
        detail::reportFailure("sending message to log", file, line, function, logger, level, format, args...);
    }
}

} // namespace logging

// Call-site macros: the level is compared first, so suppressed records evaluate no arguments.
#define REELVUE_LOG(logger, lvl, ...)                                                                      \
    do {                                                                                                   \
        if (::logging::isEnabled(lvl))                                                                     \
            ::logging::log(__FILE__, __LINE__, __func__, logger, lvl, __VA_ARGS__);                        \
    } while (false)

#define LOG_FATAL(logger, ...) REELVUE_LOG(logger, ::logging::FATAL, __VA_ARGS__)
#define LOG_ERROR(logger, ...) REELVUE_LOG(logger, ::logging::ERROR, __VA_ARGS__)
#define LOG_WARN(logger, ...) REELVUE_LOG(logger, ::logging::WARN, __VA_ARGS__)
#define LOG_INFO(logger, ...) REELVUE_LOG(logger, ::logging::INFO, __VA_ARGS__)
#define LOG_DEBUG(logger, ...) REELVUE_LOG(logger, ::logging::DEBUG, __VA_ARGS__)
#define LOG_TRACE(logger, ...) REELVUE_LOG(logger, ::logging::TRACE, __VA_ARGS__)
