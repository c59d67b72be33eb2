// Recorder file-name patterns, the fixed character positions their date and time fields are read from, and
// the camera each name form gives.
#include "core/RecordingFileName.h"

#include "core/Playlist.h"

#include <QRegularExpression>

#include <cstring>
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
        // Today's cameras, after the forms above so that those decide wherever they match. Their fields are
        // always two digits wide.
        // 20210307_140509_NF: date, time, then the mode and camera letters.
        {std::regex(R"(\d{8}_\d{6}_[A-Z])" + kTail), 0, {0, 4}, {4, 2}, {6, 2}, {9, 2}, {11, 2}, {13, 2}},
        // NO20210307-140509-000123F: NO normal, EV event, PA parking; then a counter and the camera.
        {std::regex(R"((NO|EV|PA)\d{8}-\d{6}-)" + kTail), 0, {2, 4}, {6, 2}, {8, 2}, {11, 2}, {13, 2}, {15, 2}},
        // 2021-03-07_14-05-09-front: one file a camera, the camera named by a word.
        {std::regex(R"(\d{4}-\d\d-\d\d_\d\d-\d\d-\d\d-[a-z])" + kTail), 0, {0, 4}, {5, 2}, {8, 2}, {11, 2},
         {14, 2}, {17, 2}},
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

namespace {

std::optional<std::uint32_t> categoryOfModeLetter(const QString& mode, QChar parking, QChar event) {
    if (mode.isEmpty())
        return std::nullopt;
    if (mode == QLatin1String("N"))
        return Playlist::Normal;
    if (mode[0] == parking)
        return Playlist::Parking;
    if (event.isNull() || mode[0] == event)
        return Playlist::Event;
    return std::nullopt;
}

} // namespace

RecordingCamera cameraOfFileName(const QString& baseName) {
    using Role = RecordingCamera::Role;
    // 20210307_140509_NF: an optional mode letter (N normal, P parking, any other an event: manual, impact,
    // speeding, ...) and the camera: F front, R rear, I interior, O optional.
    static const QRegularExpression letters(QStringLiteral("^(\\d{8}_\\d{6}_)([A-Z]?)([FRIO])$"));
    // 2021_0307_140509_0012PF: a counter, an optional P (parking) or E (event) and the camera: F or A front,
    // R or B rear, I interior. The counter is left out of the recording: some cameras count each file.
    static const QRegularExpression counted(QStringLiteral("^(\\d{4}_\\d{4}_\\d{6}_)\\d*([PE]?)([FRABI])$"));
    // NO20210307-140509-000123F: F front, B or R rear, I interior.
    static const QRegularExpression prefixed(QStringLiteral("^(NO|EV|PA)(\\d{8}-\\d{6}-)\\d*([FBRI])$"));
    // 2021-03-07_14-05-09-front: front, back, left_repeater, right_repeater, ...
    static const QRegularExpression worded(QStringLiteral("^(\\d{4}-\\d\\d-\\d\\d_\\d\\d-\\d\\d-\\d\\d)-([a-z_]+)$"));

    RecordingCamera result;
    const auto roleOf = [](QChar camera, const char* main, const char* rear) {
        if (std::strchr(main, camera.toLatin1()))
            return Role::Main;
        return std::strchr(rear, camera.toLatin1()) ? Role::Rear : Role::Further;
    };
    QRegularExpressionMatch match;
    if ((match = letters.match(baseName)).hasMatch()) {
        result.recording = match.captured(1) + match.captured(2);
        result.camera = match.captured(2) + match.captured(3);
        result.role = roleOf(match.captured(3)[0], "F", "R");
        result.category = categoryOfModeLetter(match.captured(2), QLatin1Char('P'), QChar());
    } else if ((match = counted.match(baseName)).hasMatch()) {
        result.recording = match.captured(1) + match.captured(2);
        result.camera = match.captured(2) + match.captured(3);
        result.role = roleOf(match.captured(3)[0], "FA", "RB");
        result.category = categoryOfModeLetter(match.captured(2), QLatin1Char('P'), QLatin1Char('E'));
    } else if ((match = prefixed.match(baseName)).hasMatch()) {
        result.recording = match.captured(1) + match.captured(2);
        result.camera = match.captured(3);
        result.role = roleOf(match.captured(3)[0], "F", "BR");
        const QString prefix = match.captured(1);
        result.category = prefix == QLatin1String("EV")   ? Playlist::Event
                          : prefix == QLatin1String("PA") ? Playlist::Parking
                                                          : Playlist::Normal;
    } else if ((match = worded.match(baseName)).hasMatch()) {
        result.recording = match.captured(1);
        result.camera = match.captured(2);
        result.role = result.camera == QLatin1String("front")  ? Role::Main
                      : result.camera == QLatin1String("back") ? Role::Rear
                                                               : Role::Further;
    } else if (!baseName.isEmpty()) {
        // Any other name: a last character R marks the rear camera, and the rear file of a main file is its
        // name with the last character replaced by R.
        result.recording = baseName.chopped(1);
        if (baseName.endsWith(QLatin1Char('F')) || baseName.endsWith(QLatin1Char('R')))
            result.camera = baseName.right(1);
        result.role = baseName.endsWith(QLatin1Char('R')) ? Role::Rear : Role::Main;
    }
    return result;
}
