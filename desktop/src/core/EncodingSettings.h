// The user's choices for saving a cut of video.
#pragma once

#include <QString>

struct EncodingSettings {
    bool onlyVideo = false;       // write the video stream(s) only
    bool forceReencoding = false; // transcode instead of copying the streams
    int camera = 0;               // 0 main (front) camera, 1 rear camera
    QString filePath;             // absolute output path; its extension chooses the container
    int rotation = 0;             // picture turn on screen: 0 none, 1 90, 2 180, 3 270 degrees
    bool burnInOverlay = false;   // re-encode with the time, speed and position drawn on every picture
};
