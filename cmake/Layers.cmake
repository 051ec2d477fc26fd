# One library for each row of the layer table; a row's DEPENDS are the rows it may include.

# morvelin_layer(NAME FOLDER folder [PARTS folders...] [DEPENDS targets...] [LINKS libraries...])
# The library of src/FOLDER and of the folders that are PARTS of it; other subfolders are layers of their own.
function(morvelin_layer name)
    cmake_parse_arguments(LAYER "" "FOLDER" "PARTS;DEPENDS;LINKS" ${ARGN})
    list(TRANSFORM LAYER_PARTS PREPEND ${PROJECT_SOURCE_DIR}/src/ OUTPUT_VARIABLE parts)
    list(TRANSFORM parts APPEND /*.cpp)
    file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${LAYER_FOLDER}/*.cpp ${parts})
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
