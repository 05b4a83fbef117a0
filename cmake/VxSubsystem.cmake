# vx_subsystem(<target> DIR <folder> [DEPS <targets>...] [PRIVATE_DEPS <targets>...])
#
# One static library per subsystem folder: every .cpp directly in <folder>
# (not in its subfolders, which are libraries of their own) is compiled into it.
# A folder without sources yet gives an interface library with the same
# dependencies. Includes are repository-rooted: "syntax/scope.hpp".
set_property(GLOBAL PROPERTY VX_ALL_LIBRARIES "")

function(vx_subsystem target)
    cmake_parse_arguments(ARG "" "DIR" "DEPS;PRIVATE_DEPS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${ARG_DIR}/*.cpp")
    if(sources)
        add_library(${target} STATIC ${sources})
        target_include_directories(${target} PUBLIC "${CMAKE_SOURCE_DIR}/src")
        target_link_libraries(${target} PUBLIC ${ARG_DEPS} PRIVATE ${ARG_PRIVATE_DEPS})
    else()
        add_library(${target} INTERFACE)
        target_include_directories(${target} INTERFACE "${CMAKE_SOURCE_DIR}/src")
        target_link_libraries(${target} INTERFACE ${ARG_DEPS} ${ARG_PRIVATE_DEPS})
    endif()
    set_property(GLOBAL APPEND PROPERTY VX_ALL_LIBRARIES ${target})
endfunction()

# vx_test_suite(<name> SOURCES_DIR <dir> LIBS <targets>...)
# One GoogleTest executable per folder of tests; each test case is registered with CTest.
function(vx_test_suite name)
    cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE ${ARG_LIBS} vx_test_support GTest::gtest GTest::gmock Threads::Threads)
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        WORKING_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}"
        PROPERTIES ENVIRONMENT "VX_LOG=off;VX_SOURCE_DIR=${CMAKE_SOURCE_DIR}"
        DISCOVERY_TIMEOUT 60)
endfunction()
