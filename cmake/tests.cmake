# One test program per folder of tests/, mirroring src. All link the engine with the simulator in
# process, but for `transport`, which speaks over the wire.
find_package(GTest REQUIRED)
include(GoogleTest)

file(GLOB SUPPORT_SOURCES CONFIGURE_DEPENDS tests/support/*.cpp)
add_library(velatra_test_support STATIC ${SUPPORT_SOURCES})
target_include_directories(velatra_test_support PUBLIC tests)
target_link_libraries(velatra_test_support PUBLIC velatra_world GTest::gtest GTest::gmock)
target_compile_definitions(velatra_test_support PUBLIC
    VELATRA_SOURCE_DIR="${CMAKE_SOURCE_DIR}" VELATRA_BINARY_DIR="${CMAKE_BINARY_DIR}")
target_compile_options(velatra_test_support PRIVATE ${VELATRA_LIGHT})
target_precompile_headers(velatra_test_support PRIVATE
    <gtest/gtest.h> <gmock/gmock.h> <fmt/format.h> <pugixml.hpp> <algorithm> <atomic> <chrono> <filesystem> <fstream>
    <functional> <map> <mutex> <optional> <string> <string_view> <vector>)

function(velatra_test folder simulator)
    file(GLOB sources CONFIGURE_DEPENDS tests/${folder}/*.cpp)
    if(NOT sources)
        return()
    endif()
    set(target test_${folder})
    add_executable(${target} ${sources})
    target_link_libraries(${target} PRIVATE ${simulator} velatra_test_support GTest::gtest_main)
    target_compile_options(${target} PRIVATE ${VELATRA_LIGHT})
    target_precompile_headers(${target} REUSE_FROM velatra_test_support)
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

set(FOLDERS platform core ui link sim traffic airports scenery liveries standin tools flow)
if(VELATRA_SANITIZE STREQUAL "thread")
    set(FOLDERS platform core standin)  # the other folders' tests have one thread
endif()
foreach(folder ${FOLDERS})
    velatra_test(${folder} velatra_direct)
endforeach()
velatra_test(transport velatra_transport)

# The real processes together.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME end_to_end
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tests/end_to_end/end_to_end.py ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
# Mostly waiting, so it begins first and the others run beside it.
set_tests_properties(end_to_end PROPERTIES TIMEOUT 400 COST 1000)
add_test(NAME tools
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tests/end_to_end/tools.py ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
