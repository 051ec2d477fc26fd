#include "media/FFmpegInput.h"

#include <new>
#include <tuple>

#include <fmt/core.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include "media/CutOffMovie.h"

namespace morvelin {

namespace {

bool isCutOff(int code) { return code == AVERROR_INVALIDDATA || code == AVERROR_EOF; }

std::string openingSentence(const std::string& name, int code) {
    if (isCutOff(code)) return fmt::format("“{}” is no movie, or it is cut off before its index.", name);
    return fmt::format("“{}” could not be opened: {}.", name, ffmpegReason(code));
}

/// What FFmpeg's opening gave, and its code.
std::pair<InputHandle, int> openedAs(const std::string& url) {
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    context->flags |= AVFMT_FLAG_DISCARD_CORRUPT; // a frame whose end is missing is no frame
    context->fps_probe_size = 0;                  // the index tells the rate
    const int code = avformat_open_input(&context, url.c_str(), nullptr, nullptr);
    return {InputHandle(context), code};
}

} // namespace

Result<InputHandle, std::string> openInput(const std::filesystem::path& path) {
    keepFFmpegQuiet();
    const std::string name = path.filename().string();
    // The prefix keeps a colon in the path from being read as a protocol.
    const std::string url = "file:" + path.string();
    auto [input, code] = openedAs(url);
    // One that ends inside a fragment's header is refused whole: it is read up to there.
    if (isCutOff(code))
        if (const auto end = startOfCutOffFragment(path))
            std::tie(input, code) = openedAs(fmt::format("subfile,,start,0,end,{},,:{}", *end, url));
    if (code < 0) return failure(openingSentence(name, code));
    if (const int found = avformat_find_stream_info(input.get(), nullptr); found < 0)
        return failure(openingSentence(name, found));
    return std::move(input);
}

void readOnly(AVFormatContext& input, int stream) {
    for (unsigned index = 0; index < input.nb_streams; ++index)
        if (static_cast<int>(index) != stream) input.streams[index]->discard = AVDISCARD_ALL;
}

} // namespace morvelin
