// The pointers made of large square pixels, drawn one unit to a pixel.
#include <string_view>

#include "render/CursorDrawing.h"

namespace morvelin {

namespace {

/// Divisible by 8, so that the image can be halved three times.
constexpr int kPixelsPerUnit = 24;
constexpr CodableColor kHardShadow{0, 0, 0, 0.26};

/// The colour of a letter in a row.
using PixelColor = CodableColor (*)(char letter, int x, int y);

CodableColor hex(unsigned color) {
    return {(color >> 16 & 0xff) / 255.0, (color >> 8 & 0xff) / 255.0, (color & 0xff) / 255.0, 1};
}

/// Draws rows of letters, the first at `corner`; a blank is nothing.
void drawPixels(std::string_view rows, PathPoint corner, PixelColor colorOf, Canvas& canvas) {
    int x = 0;
    int y = -1; // the rows' text begins with the end of a line
    for (const char letter : rows) {
        if (letter == '\n') {
            ++y;
            x = 0;
            continue;
        }
        if (letter != ' ')
            canvas.fill(VectorPath::roundedRectangle({corner.x + x, corner.y + y, 1, 1}, 0), colorOf(letter, x, y));
        ++x;
    }
}

CursorDrawing sprite(std::string_view rows, int width, int height, PixelColor color) {
    return {static_cast<double>(width),
            static_cast<double>(height),
            kPixelsPerUnit,
            {1.5, 1.5},
            {},
            [rows, color](Canvas& canvas) {
                drawPixels(
                    rows, {2, 2}, [](char, int, int) { return kHardShadow; }, canvas);
                drawPixels(rows, {1, 1}, color, canvas);
            }};
}

} // namespace

CursorDrawing monoSpritePointer() {
    constexpr std::string_view kRows = R"(
o
oo
owo
owwo
owwwo
owwwwo
owwwwwo
owwwwwwo
owwwwwwgo
owwwwwwggo
owwwwwooooo
owwowgo
owo owgo
oo  owgo
o    owgo
     owgo
      oo
)";
    return sprite(kRows, 14, 20, [](char letter, int x, int y) {
        if (letter == 'o') return hex(0x16161C);
        if (letter == 'g') return hex((x + y) % 2 == 0 ? 0xA9AEBD : 0xD9DCE5);
        return hex(0xFFFFFF);
    });
}

CursorDrawing amberSpritePointer() {
    constexpr std::string_view kRows = R"(
ooo
owyooo
oayyyyooo
 oayyyyyyooo
 oaayyyyyyyyooo
 oaaayyyyyyyyyo
  oaaayyyyyaoo
  oaaaayyyaoo
  oraaaayao
   oraaaro
   oraaro
   oraao
    oroo
    oro
    oo
)";
    return sprite(kRows, 18, 18, [](char letter, int, int) {
        switch (letter) {
        case 'o': return hex(0x4A1E08);
        case 'w': return hex(0xFFF7D6);
        case 'y': return hex(0xFFD245);
        case 'a': return hex(0xFF9E14);
        default: return hex(0xF0690F);
        }
    });
}

CursorDrawing duskSpritePointer() {
    constexpr std::string_view kRows = R"(
oooooooo
oaaaaaao
oasaaao
oaaaaao
oaaaaaao
oaaoaaaao
oao oaaaao
oo   oaaaao
      oaaao
       oao
        o
)";
    return sprite(kRows, 14, 14, [](char letter, int x, int y) {
        if (letter == 'o') return hex(0x1B1440);
        if (letter == 's') return hex(0xFFF4D0);
        static constexpr unsigned kSky[] = {0x4A3AA8, 0x6A3FB0, 0x8F44B4, 0xB54AA8, 0xD8568F,
                                            0xF0697A, 0xFF8468, 0xFFA05C, 0xFFBE62, 0xFFD877};
        return hex(kSky[std::min((x + y) / 2, 9)]);
    });
}

} // namespace morvelin
