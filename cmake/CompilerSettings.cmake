# What every target of this project is compiled and linked with.
if(MSVC)
  add_compile_options(/W4 /WX /utf-8 /permissive-)
  # The log needs what _snprintf and _vsnwprintf do with a text that is too long. Microsoft's headers call
  # them unsafe (C4996).
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
else()
  add_compile_options(-Wall -Wextra -Werror "-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies in std::string's own operator+ of a literal and a temporary.
    add_compile_options(-Wno-restrict)
  endif()
endif()
if(WIN32)
  add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
  if(NOT MSVC)
    # The compiler's own libraries are linked in: no DLL beside the module but Windows' own.
    add_link_options(-static -static-libgcc -static-libstdc++ -Wl,--no-insert-timestamp)
  endif()
endif()
