# torvel_module(<room> [LIBRARY ui] [SOURCES <files>] [FAST <files>] [ROOMS <rooms>] [LINK <targets>])
#
# One room of the library: an object library named torvel_<room> whose objects end up in libtorvel, or in
# libtorvel-ui with LIBRARY ui.
# A release is built for size, which keeps hosts small and starts them sooner, but for the FAST sources.
# ROOMS are the rooms below it; LINK the third-party targets whose headers its .cpp files include.
function(torvel_module room)
    cmake_parse_arguments(ARG "" "LIBRARY" "SOURCES;FAST;ROOMS;LINK" ${ARGN})
    set(target "torvel_${room}")
    add_library(${target} OBJECT ${ARG_SOURCES} ${ARG_FAST})
    target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>")
    target_compile_options(${target} PRIVATE "$<$<CONFIG:Release>:-Os;-ffunction-sections;-fdata-sections>")
    set_property(SOURCE ${ARG_FAST} APPEND PROPERTY COMPILE_OPTIONS $<$<CONFIG:Release>:-O2>)
    list(TRANSFORM ARG_ROOMS PREPEND torvel_)
    target_link_libraries(${target} PUBLIC ${ARG_ROOMS} PRIVATE ${ARG_LINK} torvel_flags)
    set_property(GLOBAL APPEND PROPERTY TORVEL_ROOMS_${ARG_LIBRARY} "$<TARGET_OBJECTS:${target}>")
    set_property(GLOBAL APPEND PROPERTY TORVEL_THIRD_PARTY_${ARG_LIBRARY} ${ARG_LINK})
endfunction()

# torvel_library(<target> <Component> [ROOMS ui] [LOWER <target>]): the rooms of one library together, static as <target>
# and shared as <target>_shared, from the same objects. Torvel::<Component> is the kind that BUILD_SHARED_LIBS asks for.
function(torvel_library target component)
    cmake_parse_arguments(ARG "" "ROOMS;LOWER" "" ${ARGN})
    string(REPLACE _ - file "${target}")
    get_property(rooms GLOBAL PROPERTY TORVEL_ROOMS_${ARG_ROOMS})
    get_property(third_party GLOBAL PROPERTY TORVEL_THIRD_PARTY_${ARG_ROOMS})
    list(REMOVE_DUPLICATES third_party)

    foreach(kind STATIC SHARED)
        set(library ${target})
        set(lower ${ARG_LOWER})
        if(kind STREQUAL SHARED)
            set(library ${target}_shared)
            list(TRANSFORM lower APPEND _shared)
        endif()
        add_library(${library} ${kind} ${rooms})
        set_target_properties(${library} PROPERTIES OUTPUT_NAME ${file} EXPORT_NAME ${component})
        target_include_directories(${library} PUBLIC
            "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/src>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/torvel>")
        target_compile_features(${library} PUBLIC cxx_std_20)
        target_link_libraries(${library}
            PUBLIC Threads::Threads ${lower}
            PRIVATE $<BUILD_INTERFACE:torvel_flags> ${third_party})
    endforeach()

    set(map "${PROJECT_SOURCE_DIR}/cmake/torvel.map")
    target_link_options(${target}_shared PRIVATE "-Wl,--version-script=${map}"
        -Wl,-Bsymbolic-functions -Wl,--gc-sections -Wl,-z,pack-relative-relocs)
    set_target_properties(${target}_shared PROPERTIES LINK_DEPENDS "${map}" INSTALL_RPATH "$ORIGIN"
        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
    if(NOT PROJECT_IS_TOP_LEVEL)  # a host's own build makes the kind that it links
        set_target_properties(${target} ${target}_shared PROPERTIES EXCLUDE_FROM_ALL ON)
    endif()
    if(BUILD_SHARED_LIBS)
        add_library(Torvel::${component} ALIAS ${target}_shared)
    else()
        add_library(Torvel::${component} ALIAS ${target})
    endif()
endfunction()

# torvel_test(<name> [UI] SOURCES <files> [LINK <targets>]): a test program, every case a process of its own; with
# UI each has a QApplication, without a display. None touches the stores of who runs it.
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
    set(home "${PROJECT_BINARY_DIR}/tests/home")
    set(timeout 120)
    if(TORVEL_SANITIZE)
        set(timeout 600)
    endif()
    file(MAKE_DIRECTORY "${home}")
    gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT ${timeout} ENVIRONMENT "HOME=${home}")
endfunction()
