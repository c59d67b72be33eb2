// Saves a cut of the recordings as one new file by stream copy: no decoding, timestamps rebased so the
// files follow one another without a gap.
#pragma once

#include "core/encoding/CutEncoder.h"

// Lives in a worker thread; encode() runs there, cancel() may come from any thread.
class Remuxer : public CutEncoder {
    Q_OBJECT
public:
    Remuxer(Playlist::RawItems items, TimeInterval interval, EncodingSettings settings, QObject* parent = nullptr);

public slots:
    void encode() override;
};
