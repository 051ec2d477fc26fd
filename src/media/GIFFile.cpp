#include "media/GIFFile.h"

#include <string_view>
#include <utility>

#include "media/LZWEncoder.h"

namespace morvelin {

namespace {

constexpr int kColorBits = 8;
constexpr int kFewestBits = 2;
constexpr std::size_t kFlushAt = 1 << 18;

void put(std::vector<std::uint8_t>& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

/// An image that changes nothing needs no more than the shortest codes.
int bitsOf(const GIFImage& image) {
    const bool isEmpty = image.numbers.width == 1 && image.numbers.height == 1 && image.numbers.row(0)[0] == 0;
    return isEmpty ? kFewestBits : kColorBits;
}

} // namespace

Result<GIFFile, int> GIFFile::create(const std::filesystem::path& path, PixelSize size) {
    auto file = OutputFile::create(path);
    if (!file) return failure(file.error());
    return GIFFile(std::move(*file), size);
}

void GIFFile::put16(int value) {
    m_bytes.push_back(static_cast<std::uint8_t>(value));
    m_bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void GIFFile::putColors(const ColorPalette& palette) {
    for (const PixelColor color : palette.colors)
        for (const int channel : {2, 1, 0}) m_bytes.push_back(static_cast<std::uint8_t>(channelOf(color, channel)));
}

void GIFFile::putHeader() {
    using namespace std::string_view_literals;
    put(m_bytes, "GIF89a");
    put16(m_size.width);
    put16(m_size.height);
    put(m_bytes, "\xF7\0\0"sv); // 256 colours of 8 bits; background and shape of a pixel are not told
    putColors(m_filePalette);
    put(m_bytes, "\x21\xFF\x0BNETSCAPE2.0\x03\x01\0\0\0"sv); // plays again without end
}

void GIFFile::setPalette(const ColorPalette& palette) {
    if (!m_hasHeader) m_filePalette = palette;
    m_palette = palette;
}

Result<void, int> GIFFile::append(const GIFImage& image, int delay) {
    using namespace std::string_view_literals;
    if (!std::exchange(m_hasHeader, true)) putHeader();
    put(m_bytes, "\x21\xF9\x04\x05"sv); // the image stays; a colour is none
    put16(delay);
    put(m_bytes, "\0\0,"sv); // colour 0 is the one; the image follows
    put16(image.box.x);
    put16(image.box.y);
    put16(image.box.width);
    put16(image.box.height);
    const int bits = bitsOf(image);
    if (bits == kFewestBits || m_palette == m_filePalette) {
        m_bytes.push_back(0);
    } else {
        m_bytes.push_back(0x87);
        putColors(m_palette);
    }
    appendLZW(image.numbers, bits, m_bytes);
    return m_bytes.size() < kFlushAt ? Result<void, int>() : flush();
}

Result<void, int> GIFFile::flush() {
    if (auto written = m_file.writeAt(m_file.size(), m_bytes); !written) return written;
    m_bytes.clear();
    m_file.beginSync();
    return {};
}

Result<void, int> GIFFile::finish() {
    m_bytes.push_back(';');
    if (auto written = flush(); !written) return written;
    return m_file.sync();
}

} // namespace morvelin
