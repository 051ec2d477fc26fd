# One library for each row of the layer table; a row's DEPENDS are the rows it may include.

# morvelin_layer(NAME FOLDER folder [DEPENDS targets...] [LINKS libraries...])
# The library of src/FOLDER, without its subfolders, which are layers of their own.
function(morvelin_layer name)
    cmake_parse_arguments(LAYER "" "FOLDER" "DEPENDS;LINKS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${LAYER_FOLDER}/*.cpp)
    if(NOT sources)
        add_library(${name} INTERFACE)
        target_include_directories(${name} INTERFACE ${PROJECT_SOURCE_DIR}/src)
        target_link_libraries(${name} INTERFACE ${LAYER_DEPENDS} ${LAYER_LINKS})
        return()
    endif()
    add_library(${name} STATIC ${sources})
    target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${name} PUBLIC ${LAYER_DEPENDS} PRIVATE ${LAYER_LINKS} morvelin_options)
    morvelin_use_pch(${name})
endfunction()

# One precompiled header, made by the lowest layer and shared by all that link it.
function(morvelin_use_pch name)
    if(name STREQUAL morvelin_base)
        target_precompile_headers(${name} PRIVATE ${PROJECT_SOURCE_DIR}/cmake/Precompiled.h)
    else()
        target_precompile_headers(${name} REUSE_FROM morvelin_base)
    endif()
endfunction()
