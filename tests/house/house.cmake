# Tests of the house itself: who may include whom, and whether each header stands alone.

add_executable(house_tests house/LayersTest.cpp)
target_compile_definitions(house_tests PRIVATE MORVELIN_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
target_link_libraries(house_tests PRIVATE GTest::gtest_main morvelin_options)
gtest_discover_tests(house_tests TEST_PREFIX "house/" PROPERTIES LABELS house DISCOVERY_MODE PRE_TEST)

# One source for each public header that includes nothing else: what it needs, it must include itself.
file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/src/*.h)
set(header_sources)
foreach(header ${headers})
    string(MAKE_C_IDENTIFIER ${header} name)
    set(source ${CMAKE_CURRENT_BINARY_DIR}/headers/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n" @ONLY)
    list(APPEND header_sources ${source})
endforeach()
add_library(header_check OBJECT EXCLUDE_FROM_ALL ${header_sources})
target_include_directories(header_check PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_compile_options(header_check PRIVATE -O0)
target_link_libraries(header_check PRIVATE morvelin_options nlohmann_json::nlohmann_json fmt::fmt PkgConfig::glib)
add_test(NAME house/HeadersStandAlone
    COMMAND ${CMAKE_COMMAND} --build ${PROJECT_BINARY_DIR} --target header_check)
set_tests_properties(house/HeadersStandAlone PROPERTIES LABELS house TIMEOUT 900)
