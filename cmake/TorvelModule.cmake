# torvel_module(<room> SOURCES <files> [ROOMS <rooms>] [LINK <targets>])
#
# One room of the library: an object library named torvel_<room> whose objects end up in libtorvel.
# ROOMS are the rooms below it; LINK the third-party targets whose headers its .cpp files include.
function(torvel_module room)
    cmake_parse_arguments(ARG "" "" "SOURCES;ROOMS;LINK" ${ARGN})
    set(target "torvel_${room}")
    add_library(${target} OBJECT ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
    list(TRANSFORM ARG_ROOMS PREPEND torvel_)
    target_link_libraries(${target} PUBLIC ${ARG_ROOMS} PRIVATE ${ARG_LINK} torvel_flags)
    set_property(GLOBAL APPEND PROPERTY TORVEL_ROOMS ${target})
    set_property(GLOBAL APPEND PROPERTY TORVEL_THIRD_PARTY ${ARG_LINK})
endfunction()

# torvel_test(<name> SOURCES <files> [LINK <targets>]): a test program, every case a process of its own.
function(torvel_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE Torvel::Core Torvel::Testing torvel_flags GTest::gmock GTest::gtest_main ${ARG_LINK})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
