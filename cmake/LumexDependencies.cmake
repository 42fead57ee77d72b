# Third-party libraries: zlib with minizip, libpng, Lua 5.1. Natively from Debian's packages through pkg-config;
# on Windows the static libraries of the mingw cache prefix (scripts/provision.sh) and libz-mingw-w64-dev.
# Each becomes an imported target Lumex::dep::<name>.

if(WIN32)
  find_package(ZLIB REQUIRED)
  foreach(_dep minizip lua5.1 png16)
    find_library(LUMEX_${_dep}_LIB NAMES lib${_dep}.a ${_dep} REQUIRED)
  endforeach()
  find_path(LUMEX_MINIZIP_INCLUDE NAMES minizip/unzip.h REQUIRED)
  find_path(LUMEX_LUA_INCLUDE NAMES lua.h PATH_SUFFIXES lua5.1 REQUIRED)
  find_path(LUMEX_PNG_INCLUDE NAMES png.h REQUIRED)

  # Imported static libraries, so that CMake always places zlib after the libraries that need it.
  add_library(Lumex::dep::zlib ALIAS ZLIB::ZLIB)
  add_library(Lumex::dep::minizip STATIC IMPORTED GLOBAL)
  set_target_properties(Lumex::dep::minizip PROPERTIES IMPORTED_LOCATION ${LUMEX_minizip_LIB}
    INTERFACE_INCLUDE_DIRECTORIES ${LUMEX_MINIZIP_INCLUDE} INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
  add_library(Lumex::dep::lua STATIC IMPORTED GLOBAL)
  set_target_properties(Lumex::dep::lua PROPERTIES IMPORTED_LOCATION ${LUMEX_lua5.1_LIB}
    INTERFACE_INCLUDE_DIRECTORIES ${LUMEX_LUA_INCLUDE})
  add_library(Lumex::dep::png STATIC IMPORTED GLOBAL)
  set_target_properties(Lumex::dep::png PROPERTIES IMPORTED_LOCATION ${LUMEX_png16_LIB}
    INTERFACE_INCLUDE_DIRECTORIES ${LUMEX_PNG_INCLUDE} INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(LUMEX_ZLIB REQUIRED IMPORTED_TARGET GLOBAL zlib)
  pkg_check_modules(LUMEX_MINIZIP REQUIRED IMPORTED_TARGET GLOBAL minizip)
  pkg_check_modules(LUMEX_LUA REQUIRED IMPORTED_TARGET GLOBAL lua5.1)
  pkg_check_modules(LUMEX_PNG REQUIRED IMPORTED_TARGET GLOBAL libpng)
  add_library(Lumex::dep::zlib ALIAS PkgConfig::LUMEX_ZLIB)
  add_library(Lumex::dep::minizip ALIAS PkgConfig::LUMEX_MINIZIP)
  add_library(Lumex::dep::lua ALIAS PkgConfig::LUMEX_LUA)
  add_library(Lumex::dep::png ALIAS PkgConfig::LUMEX_PNG)
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
