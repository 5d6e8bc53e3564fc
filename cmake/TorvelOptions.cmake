# What a build may choose, and the one INTERFACE target that carries warnings and sanitizers.
include(GNUInstallDirs)

option(BUILD_SHARED_LIBS "Let Torvel::Core and Torvel::UI name the shared libraries" OFF)
# Asked here for the default alone; TorvelDependencies.cmake insists when it is to be built.
find_package(Qt6 6.4 QUIET COMPONENTS Widgets UiTools)
find_package(Fontconfig QUIET)
find_package(PNG QUIET)
find_path(TORVEL_TURBOJPEG turbojpeg.h)
if(Qt6_FOUND AND Fontconfig_FOUND AND PNG_FOUND AND TORVEL_TURBOJPEG)
    set(hasScreenToolkit ON)
endif()
option(TORVEL_UI "Build Torvel::UI (on where Qt 6, fontconfig, libpng and libturbojpeg are installed)" ${hasScreenToolkit})
option(TORVEL_TESTS "Build the tests (needs the test packages)" OFF)
option(TORVEL_TESTING "Build Torvel::Testing, the kit for tests of hosts, also without the tests (needs GoogleTest)" OFF)
option(TORVEL_FUZZ "Build the fuzz targets for libFuzzer (needs clang)" OFF)
option(TORVEL_BENCH "Build the benchmark programs (needs the bench packages)" OFF)
option(TORVEL_WERROR "Treat warnings as errors" OFF)
set(TORVEL_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize takes them (address,undefined or thread)")

if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
    set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
endif()

find_program(TORVEL_CCACHE ccache)
if(TORVEL_CCACHE)
    set(CMAKE_C_COMPILER_LAUNCHER "${TORVEL_CCACHE}")
    set(CMAKE_CXX_COMPILER_LAUNCHER "${TORVEL_CCACHE}")
endif()

add_library(torvel_flags INTERFACE)
target_compile_options(torvel_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>  # g++ 12 sees overlaps in joined texts that are none
    $<$<BOOL:${TORVEL_WERROR}>:-Werror>
    # Source names in logs and assertions are the library's own, never a builder's folders.
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/="
    -fstack-protector-strong -fvisibility-inlines-hidden)
target_link_options(torvel_flags INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
if(TORVEL_FUZZ)
    target_compile_options(torvel_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(TORVEL_SANITIZE)
    target_compile_options(torvel_flags INTERFACE "-fsanitize=${TORVEL_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
    target_link_options(torvel_flags INTERFACE "-fsanitize=${TORVEL_SANITIZE}")
else()
    target_compile_options(torvel_flags INTERFACE $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>)
endif()
