// JSON text for the map page, written straight into one buffer.
#include "ui/MapMessages.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>

namespace {

// JSON has no NaN or infinity: such a value goes as null.
void writeNumber(fmt::memory_buffer& out, double value) {
    if (std::isfinite(value))
        fmt::format_to(std::back_inserter(out), "{}", value);
    else
        fmt::format_to(std::back_inserter(out), "null");
}

// Degrees to 7 decimals (about a centimetre), written with integer arithmetic: a day-long track has tens of
// thousands of coordinates, and the full 17 digits would nearly double the text for no visible gain.
void writeDegrees(fmt::memory_buffer& out, double degrees) {
    if (!std::isfinite(degrees) || std::abs(degrees) > 1e9) {
        writeNumber(out, degrees);
        return;
    }
    long long scaled = std::llround(degrees * 1e7);
    if (scaled < 0) {
        out.push_back('-');
        scaled = -scaled;
    }
    fmt::format_to(std::back_inserter(out), "{}", scaled / 10'000'000);
    long long fraction = scaled % 10'000'000;
    if (fraction == 0)
        return;
    int digits = 7;
    while (fraction % 10 == 0) {
        fraction /= 10;
        --digits;
    }
    fmt::format_to(std::back_inserter(out), ".{:0{}}", fraction, digits);
}

// Averaged speeds are single precision: their shortest single-precision form is exact enough and short.
void writeSpeed(fmt::memory_buffer& out, double speed) {
    const float single = static_cast<float>(speed);
    if (std::isfinite(speed) && static_cast<double>(single) == speed)
        fmt::format_to(std::back_inserter(out), "{}", single);
    else
        writeNumber(out, speed);
}

void writeCoordinates(fmt::memory_buffer& out, double longitude, double latitude) {
    fmt::format_to(std::back_inserter(out), "\"coordinates\":{{\"longitude\":");
    writeDegrees(out, longitude);
    fmt::format_to(std::back_inserter(out), ",\"latitude\":");
    writeDegrees(out, latitude);
    out.push_back('}');
}

QString toQString(const fmt::memory_buffer& out) {
    return QString::fromUtf8(out.data(), static_cast<int>(out.size()));
}

} // namespace

QString trackDocument(const TrackPositions& simplified) {
    fmt::memory_buffer out;
    out.reserve(simplified.size() * 110 + 32);
    fmt::format_to(std::back_inserter(out), "{{\"positions\":[");
    const char* separator = "";
    for (const TrackPosition& position : simplified) {
        fmt::format_to(std::back_inserter(out), "{}{{", separator);
        writeCoordinates(out, position.longitude, position.latitude);
        fmt::format_to(std::back_inserter(out), ",\"captured\":{},\"speed\":", trackTimeToSeconds(position.time));
        if (position.speed)
            writeSpeed(out, *position.speed);
        else
            fmt::format_to(std::back_inserter(out), "null");
        out.push_back('}');
        separator = ",";
    }
    fmt::format_to(std::back_inserter(out), "]}}");
    return toQString(out);
}

QString timeMarksDocument(const std::vector<MapPoint>& marks) {
    fmt::memory_buffer out;
    out.reserve(marks.size() * 110 + 8);
    out.push_back('[');
    const char* separator = "";
    for (const MapPoint& mark : marks) {
        fmt::format_to(std::back_inserter(out), "{}{{", separator);
        writeCoordinates(out, mark.longitude, mark.latitude);
        fmt::format_to(std::back_inserter(out), ",\"angle\":");
        writeNumber(out, mark.heading.value_or(0.0));
        fmt::format_to(std::back_inserter(out), ",\"captured\":");
        writeNumber(out, mark.time);
        out.push_back('}');
        separator = ",";
    }
    out.push_back(']');
    return toQString(out);
}
