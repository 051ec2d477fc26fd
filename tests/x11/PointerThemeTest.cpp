// The arrow of a pointer theme that the test makes itself.

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "base/TemporaryFolder.h"
#include "platform/x11/X11PointerSource.h"
#include "x11/VirtualDisplay.h"

// Last: its macros take common words.
#include <X11/Xcursor/Xcursor.h>

namespace morvelin {

TEST(PointerTheme, GivesTheArrowInADenserImage) {
    const TemporaryFolder folder;
    const auto cursors = folder.path() / "probe" / "cursors";
    std::filesystem::create_directories(cursors);
    XcursorImages* images = XcursorImagesCreate(2);
    for (const unsigned size : {24U, 96U}) {
        XcursorImage* image = XcursorImageCreate(static_cast<int>(size), static_cast<int>(size));
        image->size = size;
        image->xhot = image->yhot = size / 8;
        std::fill_n(image->pixels, size * size, size == 96 ? 0xff000000U : 0xffffffffU);
        images->images[images->nimage++] = image;
    }
    ASSERT_TRUE(XcursorFilenameSaveImages((cursors / "left_ptr").c_str(), images));
    XcursorImagesDestroy(images);

    setenv("XCURSOR_PATH", folder.path().c_str(), 1);
    setenv("XCURSOR_THEME", "probe", 1);
    setenv("XCURSOR_SIZE", "22", 1);
    const VirtualDisplay display;
    const auto pointer = X11PointerSource::connect(display.name());
    ASSERT_TRUE(pointer);
    const auto arrow = (*pointer)->arrow();
    ASSERT_TRUE(arrow);
    EXPECT_EQ(arrow->image.size, (PixelSize{96, 96}));
    EXPECT_EQ(arrow->width, 24);
    EXPECT_EQ(arrow->hotSpotX, 3);
}

} // namespace morvelin
