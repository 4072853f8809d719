# What stands behind `velatra_dependencies`: every library that the engine calls.
find_package(Threads REQUIRED)
find_package(pugixml REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(CURL REQUIRED)
find_package(fmt REQUIRED)
# By pkg-config: libzip's own CMake files ask for its command line tools too.
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBZIP REQUIRED IMPORTED_TARGET libzip)
pkg_check_modules(HTTPLIB REQUIRED IMPORTED_TARGET cpp-httplib)  # the stand-in's file server only

add_library(velatra_dependencies INTERFACE)
target_compile_definitions(velatra_dependencies INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED
    # Asio picks its allocator by what was included before it, which differs from file to file.
    ASIO_DISABLE_STD_ALIGNED_ALLOC)
target_link_libraries(velatra_dependencies INTERFACE
    Threads::Threads pugixml::pugixml nlohmann_json::nlohmann_json CURL::libcurl PkgConfig::LIBZIP fmt::fmt)
