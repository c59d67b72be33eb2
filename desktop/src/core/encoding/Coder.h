// Saves a cut of the recordings by decoding and encoding again with the camera's video codec; the only
// export that can turn the picture.
#pragma once

#include "core/BaseEncoder.h"

// Lives in a worker thread; encode() runs there, cancel() may come from any thread.
class Coder : public BaseEncoder {
    Q_OBJECT
public:
    Coder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent = nullptr);

public slots:
    void encode() override;
};
