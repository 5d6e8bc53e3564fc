# The parts that the core buys in, one place; a host that links it statically reads this too. tools/install-deps names
# the packages that bring them.
find_package(Threads REQUIRED)
find_package(OpenSSL 3.0 REQUIRED)
find_package(ZLIB REQUIRED)
find_package(ICU 72 REQUIRED COMPONENTS uc i18n)
find_package(PkgConfig REQUIRED)
pkg_check_modules(URIPARSER REQUIRED IMPORTED_TARGET liburiparser)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(SIMDJSON REQUIRED IMPORTED_TARGET simdjson)
pkg_check_modules(BROTLIDEC REQUIRED IMPORTED_TARGET libbrotlidec)
pkg_check_modules(SODIUM REQUIRED IMPORTED_TARGET libsodium)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3>=3.40)
pkg_check_modules(FREETYPE REQUIRED IMPORTED_TARGET freetype2)
