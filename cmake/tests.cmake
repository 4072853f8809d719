# One test program per folder of tests/, mirroring src. All link the engine with the simulator in
# process, but for `transport`, which speaks over the wire.
find_package(GTest REQUIRED)
include(GoogleTest)

file(GLOB SUPPORT_SOURCES CONFIGURE_DEPENDS tests/support/*.cpp)

function(velatra_test folder simulator)
    file(GLOB sources CONFIGURE_DEPENDS tests/${folder}/*.cpp)
    if(NOT sources)
        return()
    endif()
    set(target test_${folder})
    # The support drives the simulator in process, which the transport's tests do without.
    if(simulator STREQUAL velatra_direct)
        list(APPEND sources ${SUPPORT_SOURCES})
    endif()
    add_executable(${target} ${sources})
    target_include_directories(${target} PRIVATE . tests)
    target_link_libraries(${target} PRIVATE ${simulator} GTest::gtest GTest::gmock GTest::gtest_main)
    target_compile_definitions(${target} PRIVATE
        VELATRA_SOURCE_DIR="${CMAKE_SOURCE_DIR}" VELATRA_BINARY_DIR="${CMAKE_BINARY_DIR}")
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()

foreach(folder platform core ui link sim traffic airports scenery liveries standin tools flow)
    velatra_test(${folder} velatra_direct)
endforeach()
velatra_test(transport velatra_transport)

# The real processes together.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME end_to_end
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tests/end_to_end/end_to_end.py ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
set_tests_properties(end_to_end PROPERTIES TIMEOUT 400 RUN_SERIAL ON)
add_test(NAME tools
    COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/tests/end_to_end/tools.py ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR})
