# Every library the engine stands on, each as one imported target.

find_package(PkgConfig REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(simdjson REQUIRED)

pkg_check_modules(glib REQUIRED IMPORTED_TARGET glib-2.0 gio-2.0 gio-unix-2.0)
pkg_check_modules(ffmpeg REQUIRED IMPORTED_TARGET libavformat libavcodec libavfilter libavutil libswscale libswresample)
pkg_check_modules(x264 REQUIRED IMPORTED_TARGET x264)
pkg_check_modules(png REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(cairo REQUIRED IMPORTED_TARGET cairo)
pkg_check_modules(pango REQUIRED IMPORTED_TARGET pangocairo)
pkg_check_modules(pulse REQUIRED IMPORTED_TARGET libpulse)
pkg_check_modules(xcb REQUIRED IMPORTED_TARGET
    xcb xcb-shm xcb-damage xcb-composite xcb-xfixes xcb-randr xcb-xinput xcb-xtest xcursor)
