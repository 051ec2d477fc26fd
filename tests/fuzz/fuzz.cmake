# Targets that are fed with what should never come, each with a corpus of its own. Every test run takes the corpora as they
# are; `ctest -C Fuzz -L fuzz` mutates them for a minute each, best in the asan build.

# morvelin_fuzz(NAME SOURCES sources... DEPENDS targets...)
function(morvelin_fuzz name)
    cmake_parse_arguments(FUZZ "" "" "SOURCES;DEPENDS" ${ARGN})
    add_executable(fuzz_${name} fuzz/Driver.cpp ${FUZZ_SOURCES})
    target_link_libraries(fuzz_${name} PRIVATE ${FUZZ_DEPENDS} morvelin_options)
    set(corpus ${CMAKE_CURRENT_SOURCE_DIR}/fuzz/corpus/${name})
    set(folder ${CMAKE_CURRENT_BINARY_DIR}/fuzz/${name})
    file(MAKE_DIRECTORY ${folder}/corpus ${folder}/mutations)
    add_test(NAME fuzz/${name}_corpus COMMAND fuzz_${name} ${corpus} WORKING_DIRECTORY ${folder}/corpus)
    set_tests_properties(fuzz/${name}_corpus PROPERTIES LABELS unit TIMEOUT 60)
    add_test(NAME fuzz/${name}_mutations CONFIGURATIONS Fuzz COMMAND fuzz_${name} ${corpus} 60
        WORKING_DIRECTORY ${folder}/mutations)
    set_tests_properties(fuzz/${name}_mutations PROPERTIES LABELS fuzz TIMEOUT 180)
endfunction()

morvelin_fuzz(mcp
    SOURCES fuzz/MCPLines.cpp ${PROJECT_SOURCE_DIR}/src/relay/RequestScan.cpp
    DEPENDS morvelin_agent morvelin_null)
