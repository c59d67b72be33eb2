// Saves a cut of the recordings by decoding and encoding again with the camera's video codec; the only
// export that can turn the picture.
#pragma once

#include "core/encoding/CutEncoder.h"

// Lives in a worker thread; encode() runs there, cancel() may come from any thread.
class Coder : public CutEncoder {
    Q_OBJECT
public:
    Coder(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent = nullptr);

public slots:
    void encode() override;
};
