# Cross toolchain for the Windows lane: mingw-w64 with the posix thread model (the win32 model lacks std::thread).
# Third-party static libraries (Lua 5.1, minizip, libpng) come from the cache prefix that scripts/provision.sh
# fills; executables run under Wine in the Debian 13 root through scripts/wine-session.sh.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(DEFINED ENV{LUMEX_CACHE})
  set(LUMEX_CACHE "$ENV{LUMEX_CACHE}")
else()
  set(LUMEX_CACHE /var/cache/lumex)
endif()
set(LUMEX_MINGW_PREFIX "${LUMEX_CACHE}/mingw" CACHE PATH "Static third-party libraries built for mingw")

# Appended, so that an application can add its own prefixes (an installed Lumex, say) with -DCMAKE_FIND_ROOT_PATH.
list(APPEND CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 "${LUMEX_MINGW_PREFIX}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ZLIB_USE_STATIC_LIBS ON)

# Executables and the DLL import only system DLLs.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-session.sh;exec")
