// Recorder file-name patterns and the fixed character positions their date and time fields are read from.
#include "core/RecordingFileName.h"

#include <regex>
#include <string>
#include <vector>

namespace {

// Field patterns. The one-digit alternatives are admitted on purpose although the fields are read at
// fixed two-character positions: such a name then shifts its later fields and fails the conversion or the
// validity test, so it gets no time from its name.
const std::string kTwoDigits = R"(\d\d)";
const std::string kFourDigits = R"(\d\d\d\d)";
const std::string kMonth = "(0?[1-9]|1[0-2])";
const std::string kDay = "(0?[1-9]|[12][0-9]|3[01])";
const std::string kHours = "(00|0[0-9]|1[0-9]|2[0-3])";
const std::string kMinutes = "([0-9]|[0-5][0-9])";
const std::string kSeconds = "([0-9]|[0-5][0-9])";
const std::string kTail = ".*$";

constexpr qint64 kMaxDaysFromNow = 18250; // fifty years: anything further is a recorder clock never set

struct Field {
    int position;
    int width;
};

struct NamePattern {
    std::regex regex;
    int yearOffset;
    Field year, month, day, hours, minutes, seconds;
};

const std::vector<NamePattern>& namePatterns() {
    static const std::vector<NamePattern> patterns = {
        {std::regex("DVR-" + kFourDigits + "-" + kMonth + "-" + kDay + "_" + kHours + "-" + kMinutes + "-" +
                    kSeconds + kTail),
         0, {4, 4}, {9, 2}, {12, 2}, {15, 2}, {18, 2}, {21, 2}},
        {std::regex("(FILE|EMER|PARK)" + kTwoDigits + kMonth + kDay + "-" + kHours + kMinutes + kSeconds + kTail),
         2000, {4, 2}, {6, 2}, {8, 2}, {11, 2}, {13, 2}, {15, 2}},
        {std::regex(kFourDigits + "_" + kMonth + kDay + "_" + kHours + kMinutes + kSeconds + kTail),
         0, {0, 4}, {5, 2}, {7, 2}, {10, 2}, {12, 2}, {14, 2}},
    };
    return patterns;
}

bool readField(const QString& name, Field field, int& value) {
    bool ok = false;
    value = name.mid(field.position, field.width).toInt(&ok, 10);
    return ok;
}

} // namespace

std::optional<QDateTime> startTimeFromFileName(const QString& fileName, const QDateTime& now) {
    const std::string name = fileName.toStdString();
    for (const NamePattern& pattern : namePatterns()) {
        // regex_search with match_continuous: the pattern must match from the first character on.
        if (!std::regex_search(name, pattern.regex, std::regex_constants::match_continuous))
            continue;
        int year = 0, month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
        if (!readField(fileName, pattern.year, year) || !readField(fileName, pattern.month, month) ||
            !readField(fileName, pattern.day, day) || !readField(fileName, pattern.hours, hours) ||
            !readField(fileName, pattern.minutes, minutes) || !readField(fileName, pattern.seconds, seconds))
            return std::nullopt;
        const QDateTime time(QDate(year + pattern.yearOffset, month, day), QTime(hours, minutes, seconds, 0),
                             Qt::LocalTime);
        if (!time.isValid() || std::abs(time.daysTo(now)) >= kMaxDaysFromNow)
            return std::nullopt;
        return time;
    }
    return std::nullopt;
}
