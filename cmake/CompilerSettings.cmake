# The compiler and linker options of every target of this project.
if(MSVC)
  add_compile_options(/W4 /WX /utf-8 /permissive-)
  # The log relies on how _snprintf and _vsnwprintf cut a text that is too long. Microsoft's headers warn
  # that these functions are unsafe (C4996).
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
else()
  add_compile_options(-Wall -Wextra -Werror "-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")
  if(WIN32)
    # Release builds have debug information, too. tessel_product moves it into a separate file.
    add_compile_options($<$<AND:$<CONFIG:Release>,$<NOT:$<COMPILE_LANGUAGE:RC>>>:-g>)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 warns falsely about overlapping copies in std::string's operator+.
    add_compile_options(-Wno-restrict)
  endif()
endif()
if(WIN32)
  add_compile_definitions(UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
  if(NOT MSVC)
    # Links the compiler's libraries statically, so that the module needs only the DLLs of Windows.
    add_link_options(-static -static-libgcc -static-libstdc++ -Wl,--no-insert-timestamp)
  endif()
endif()
