#include "media/PaletteGenerator.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include <fmt/format.h>

#include "media/FFmpegHandles.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/frame.h>
}

namespace morvelin {

void PaletteGenerator::FreeGraph::operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }

PaletteGenerator::PaletteGenerator() { m_tile.reserve(kTile); }
PaletteGenerator::PaletteGenerator(PaletteGenerator&&) noexcept = default;
PaletteGenerator& PaletteGenerator::operator=(PaletteGenerator&&) noexcept = default;
PaletteGenerator::~PaletteGenerator() = default;

void PaletteGenerator::open() {
    keepFFmpegQuiet();
    m_graph.reset(avfilter_graph_alloc());
    if (m_graph == nullptr) throw std::bad_alloc();
    m_graph->nb_threads = 1;
    const auto add = [&](const char* filter, const std::string& options, AVFilterContext*& context) {
        if (m_error >= 0)
            m_error = std::min(0, avfilter_graph_create_filter(&context, avfilter_get_by_name(filter), filter,
                                                               options.c_str(), nullptr, m_graph.get()));
    };
    const auto link = [&](AVFilterContext* from, AVFilterContext* to) {
        if (m_error >= 0) m_error = std::min(0, avfilter_link(from, 0, to, 0));
    };
    AVFilterContext* generator = nullptr;
    add("buffer", fmt::format("width={0}:height={0}:pix_fmt=bgra:time_base=1/1", kTileSide), m_source);
    add("palettegen", "max_colors=256:reserve_transparent=1", generator);
    add("buffersink", "", m_sink);
    link(m_source, generator);
    link(generator, m_sink);
    if (m_error >= 0) m_error = std::min(0, avfilter_graph_config(m_graph.get(), nullptr));
}

void PaletteGenerator::feed() {
    if (m_graph == nullptr) open();
    // The last tile repeats its own pixels.
    for (std::size_t i = 0; m_tile.size() < kTile; ++i) m_tile.push_back(m_tile[i]);
    if (m_error >= 0) {
        const FrameHandle frame = newFrame();
        frame->width = kTileSide;
        frame->height = kTileSide;
        frame->format = AV_PIX_FMT_BGRA;
        if (av_frame_get_buffer(frame.get(), 0) < 0) throw std::bad_alloc();
        for (int y = 0; y < kTileSide; ++y)
            std::memcpy(frame->data[0] + y * frame->linesize[0], m_tile.data() + y * kTileSide,
                        kTileSide * sizeof(PixelColor));
        m_error = std::min(0, av_buffersrc_add_frame(m_source, frame.get()));
    }
    m_tile.clear();
    m_hasFed = true;
}

Result<ColorPalette, int> PaletteGenerator::palette() {
    if (!m_tile.empty()) feed();
    const FrameHandle frame = newFrame();
    if (m_error >= 0) m_error = std::min(0, av_buffersrc_add_frame(m_source, nullptr));
    if (m_error >= 0) m_error = std::min(0, av_buffersink_get_frame(m_sink, frame.get()));
    if (m_error < 0) return failure(ENOMEM);

    // The filter gives 16 × 16 colours, that of transparent pixels last.
    ColorPalette palette;
    std::size_t number = 1;
    for (int y = 0; y < frame->height; ++y)
        for (int x = 0; x < frame->width && number < palette.colors.size(); ++x) {
            PixelColor color = 0;
            std::memcpy(&color, frame->data[0] + y * frame->linesize[0] + 4 * x, sizeof color);
            if (color >> 24 == 0xFF) palette.colors[number++] = color;
        }
    std::fill(palette.colors.begin() + static_cast<std::ptrdiff_t>(number), palette.colors.end(),
              palette.colors[number - 1]);
    return palette;
}

} // namespace morvelin
