// The choices for saving a cut of the recordings as a new video.
#pragma once

#include <QString>

struct EncodingSettings {
    bool onlyVideo = false;       // write only the video stream(s)
    bool forceReencoding = false; // transcode instead of stream copy
    int camera = 0;               // 0 main (front) camera, 1 rear camera
    QString filePath;             // absolute output path; its extension chooses the container
    int rotation = 0;             // picture turn as shown: 0 none, 1 = 90, 2 = 180, 3 = 270 degrees
};
