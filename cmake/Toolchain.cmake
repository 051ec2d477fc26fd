# Warnings, sanitizers, and the two tools that make builds quick where they are installed.

# Every target is threaded; one set of flags for all keeps the precompiled header valid everywhere.
add_compile_options(-pthread)
add_link_options(-pthread)

add_library(morvelin_options INTERFACE)
target_compile_options(morvelin_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fno-math-errno)

if(MORVELIN_SANITIZE)
    # Instrumented code makes GCC see uninitialised values in the standard library's own headers.
    target_compile_options(morvelin_options INTERFACE
        -fsanitize=${MORVELIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -O1
        -Wno-maybe-uninitialized)
    target_link_options(morvelin_options INTERFACE -fsanitize=${MORVELIN_SANITIZE})
endif()

find_program(MORVELIN_CCACHE ccache)
if(MORVELIN_CCACHE)
    # A precompiled header is only cached with these sloppiness settings.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${MORVELIN_CCACHE})
    add_compile_options(-fpch-preprocess)
endif()

find_program(MORVELIN_MOLD mold)
if(MORVELIN_MOLD)
    add_link_options(-fuse-ld=mold)
endif()
