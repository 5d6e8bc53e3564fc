# torvel_module(<room> [FAST] [LIBRARY ui] SOURCES <files> [ROOMS <rooms>] [LINK <targets>])
#
# One room of the library: an object library named torvel_<room> whose objects end up in libtorvel, or in
# libtorvel-ui with LIBRARY ui.
# A release is built for size, which keeps hosts small and starts them sooner, but for the FAST rooms.
# ROOMS are the rooms below it; LINK the third-party targets whose headers its .cpp files include.
function(torvel_module room)
    cmake_parse_arguments(ARG "FAST" "LIBRARY" "SOURCES;ROOMS;LINK" ${ARGN})
    set(target "torvel_${room}")
    add_library(${target} OBJECT ${ARG_SOURCES})
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:$<IF:$<BOOL:${ARG_FAST}>,-O2,-Os>>)
    list(TRANSFORM ARG_ROOMS PREPEND torvel_)
    target_link_libraries(${target} PUBLIC ${ARG_ROOMS} PRIVATE ${ARG_LINK} torvel_flags)
    set_property(GLOBAL APPEND PROPERTY TORVEL_ROOMS_${ARG_LIBRARY} "$<TARGET_OBJECTS:${target}>")
    set_property(GLOBAL APPEND PROPERTY TORVEL_THIRD_PARTY_${ARG_LIBRARY} ${ARG_LINK})
endfunction()

# torvel_test(<name> [UI] SOURCES <files> [LINK <targets>]): a test program, every case a process of its own; with
# UI each has a QApplication, without a display.
function(torvel_test name)
    cmake_parse_arguments(ARG "UI" "" "SOURCES;LINK" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${name} PRIVATE Torvel::Core Torvel::Testing torvel_flags GTest::gmock ${ARG_LINK})
    if(ARG_UI)
        target_sources(${name} PRIVATE support/ScreenMain.cpp)
        target_compile_definitions(${name} PRIVATE "TORVEL_TEST_FONTS=\"${PROJECT_BINARY_DIR}/tests/fonts.conf\"")
        target_link_libraries(${name} PRIVATE Torvel::UI Qt6::Widgets)
    else()
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
    endif()
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/tests")
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
endfunction()
