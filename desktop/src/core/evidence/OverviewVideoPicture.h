// One picture of the overview: the cameras side by side, then the burned-in text.
#pragma once

#include "core/evidence/OverviewVideoFfmpeg.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

struct AVFilterContext;
struct AVFilterGraph;
struct SwsContext;

namespace evidence::detail {

// The shown width of a picture: its coded width corrected by the sample aspect ratio.
double shownWidth(const AVFrame& frame);

// Places each camera's picture, scaled, side by side in one yuv420p picture; black where one has none.
class OverviewCanvas {
public:
    // Even widths, one a camera, and an even height.
    OverviewCanvas(std::vector<int> widths, int height);
    ~OverviewCanvas();
    OverviewCanvas(const OverviewCanvas&) = delete;
    OverviewCanvas& operator=(const OverviewCanvas&) = delete;

    int width() const { return m_width; }
    int height() const { return m_height; }
    // Where a camera's picture begins.
    int left(std::size_t camera) const;

    // One picture a camera, nullptr for none.
    FramePtr compose(const std::vector<const AVFrame*>& pictures);

private:
    std::vector<int> m_widths;
    int m_height;
    int m_width = 0;
    std::vector<SwsContext*> m_scalers; // one a camera, kept while the size stays
};

// buffer -> transpose (when turned) -> drawtext (each picture's own text) -> drawtext per camera name ->
// buffersink, on canvas pictures.
class OverviewTextFilter {
public:
    // rotation: the turn of a cut's picture, 0 none, 1 90, 2 180, 3 270 degrees (as a cut's settings say);
    // the canvas then holds one camera.
    OverviewTextFilter(const OverviewCanvas& canvas, AVRational timeBase, const QStringList& cameraNames,
                       const QString& fontFile, int rotation = 0);
    ~OverviewTextFilter();
    OverviewTextFilter(const OverviewTextFilter&) = delete;
    OverviewTextFilter& operator=(const OverviewTextFilter&) = delete;

    // Draws `text` (lines split by '\n') at the top left and the names at the foot of each camera's place,
    // and hands the result to `use`.
    void draw(FramePtr picture, const QString& text, const std::function<void(const AVFrame*)>& use);

private:
    AVFilterContext* drawText(const std::string& name, const std::string& font, const std::string& text, int size,
                              const std::string& x, const std::string& y, bool expand);

    struct GraphDeleter {
        void operator()(AVFilterGraph* graph) const;
    };
    std::unique_ptr<AVFilterGraph, GraphDeleter> m_graph;
    AVFilterContext* m_source = nullptr;
    AVFilterContext* m_sink = nullptr;
    FramePtr m_filtered;
};

} // namespace evidence::detail
