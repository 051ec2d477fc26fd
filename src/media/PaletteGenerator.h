// The best 255 colours for a number of pixels, found by FFmpeg's filter for that. Owned by a GIF's writer.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "core/base/Result.h"
#include "media/ColorPalette.h"

struct AVFilterContext;
struct AVFilterGraph;

namespace morvelin {

/// One thread at a time; not tied to one.
class PaletteGenerator {
public:
    PaletteGenerator();
    PaletteGenerator(PaletteGenerator&&) noexcept;
    PaletteGenerator& operator=(PaletteGenerator&&) noexcept;
    ~PaletteGenerator();

    void add(PixelColor pixel) {
        m_tile.push_back(pixel);
        if (m_tile.size() == kTile) feed();
    }
    [[nodiscard]] bool isEmpty() const { return m_tile.empty() && !m_hasFed; }

    /// The palette of all pixels so far, of which there must be one; nothing is added afterwards. Fails without memory.
    [[nodiscard]] Result<ColorPalette, int> palette();

private:
    struct FreeGraph {
        void operator()(AVFilterGraph* graph) const;
    };

    static constexpr int kTileSide = 64;
    static constexpr std::size_t kTile = kTileSide * kTileSide;

    void open();
    void feed();

    std::unique_ptr<AVFilterGraph, FreeGraph> m_graph;
    AVFilterContext* m_source = nullptr; ///< of the graph, as is the sink
    AVFilterContext* m_sink = nullptr;
    std::vector<PixelColor> m_tile; ///< the filter takes pictures of one size; which pixels stand where is all the same
    bool m_hasFed = false;
    int m_error = 0; ///< FFmpeg's, of the first call that failed
};

} // namespace morvelin
