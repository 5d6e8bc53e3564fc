# What the screen side buys in, on top of the core.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets UiTools)
find_package(Fontconfig REQUIRED)
find_package(PNG REQUIRED)
pkg_check_modules(TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg)
