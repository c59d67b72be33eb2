// The size pictures are converted to for display, shared by a video widget and the decoder that feeds it.
#pragma once

#include <QSize>

#include <mutex>

namespace av {

// The size of the picture (before turning) that shows a frame of `frameSize` aspect-fit in `area`, turned
// counter-clockwise by `orientation` degrees. The width is made even when it is odd: swscale's fast paths
// work on pairs of pixels, and a column less is not visible.
QSize fittedPictureSize(QSize frameSize, QSize area, int orientation);

// Written on the GUI thread (the widget's area and turn), read on a decoder thread; a mutex guards both.
class PictureTarget {
public:
    // An empty area (a hidden widget) asks for no pictures.
    void set(QSize area, int orientation);
    // Empty when nothing is to be converted.
    QSize pictureSizeFor(QSize frameSize) const;

private:
    mutable std::mutex m_mutex;
    QSize m_area;
    int m_orientation = 0;
};

} // namespace av
