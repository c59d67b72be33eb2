// Reads the start time and the camera of a recording from its file name (the names recorders give their files).
#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>
#include <optional>

// The local start time written in a video file name, or nothing when the name matches none of the
// recorder patterns, a field does not convert, or the date lies 18250 days (fifty years) or more from
// `now`. Recognised forms, tried in this order:
//   DVR-2021-03-07_14-05-09...   FILE210307-140509... (also EMER, PARK)   2021_0307_140509...
// and after them the forms of today's cameras:
//   20210307_140509_NF...   NO20210307-140509-000123F... (also EV, PA)   2021-03-07_14-05-09-front...
std::optional<QDateTime> startTimeFromFileName(const QString& fileName,
                                               const QDateTime& now = QDateTime::currentDateTime());

// The camera a video file of a recording holds, and what its name shares with the files of the other cameras
// of the same recording.
//
//   cameraOfFileName("20210307_140509_NR") == {Rear, "20210307_140509_N", "NR", Normal}
//   cameraOfFileName("2021-03-07_14-05-09-left_repeater") == {Further, "2021-03-07_14-05-09", "left_repeater"}
//   cameraOfFileName("clip_R") == {Rear, "clip_", "R"}   (any other name: its last character is the camera)
struct RecordingCamera {
    enum class Role : std::uint8_t {
        Main,    // the front camera: the recording is listed under this file
        Rear,    // played beside the main camera
        Further, // a third or fourth camera (interior, side repeaters): kept with the recording, not played yet
    };
    Role role = Role::Main;
    QString recording; // the base name without the camera (and without a counter that differs between cameras)
    QString camera;    // the camera as the name gives it: "F", "NR", "B", "back", "left_repeater"; may be empty
    // The category the name states (normal, parking or event, as Playlist::Category), if it states one.
    std::optional<std::uint32_t> category;
};
// `baseName` is the file name without its suffix.
RecordingCamera cameraOfFileName(const QString& baseName);
