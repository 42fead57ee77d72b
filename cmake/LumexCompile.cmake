# Compile settings shared by every Lumex target.

if(WIN32)
  # mingw's own C99 printf (so %zu and %lld behave), Windows 10 API level, lean windows.h without min/max.
  add_compile_definitions(__USE_MINGW_ANSI_STDIO=1 _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX)
endif()

if(LUMEX_SANITIZE)
  string(REPLACE ";" "," _lumex_san "${LUMEX_SANITIZE}")
  add_compile_options(-fsanitize=${_lumex_san} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${_lumex_san})
endif()

# Warnings are errors in every lane; third-party code built in-tree (GoogleTest on Windows) does not get them.
function(lumex_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-class-memaccess)
    if(LUMEX_SANITIZE)
      # g++ 12's flow analysis reports false maybe-uninitialized warnings in instrumented standard headers
      # (std::function inside std::regex); the plain lanes keep the warning.
      target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
  endif()
endfunction()
