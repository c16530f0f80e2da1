# find_package(TesselSLB) reads this file. It defines three targets: TesselSLB::TesselSLB for broker hosts
# and for clients that call the module itself, TesselSLB::Client for the C++ client library, and
# TesselSLB::C for the C interface. The function tessel_deploy(TARGET) makes a program of yours ready to run.
if(TARGET TesselSLB::TesselSLB)
  return()
endif()
get_filename_component(_prefix "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
if(MSVC)
  set(_before "")
  set(_after .lib)
else()
  set(_before lib)
  set(_after .dll.a)
endif()

add_library(TesselSLB::TesselSLB SHARED IMPORTED)
# Clients need oleaut32, because inline functions of the headers free and copy BSTRs. Clients must not use
# iterator debugging, because it adds a pointer to each vector, which the module does not expect.
set_target_properties(TesselSLB::TesselSLB PROPERTIES
  IMPORTED_LOCATION "${_prefix}/bin/TesselSLB_x64.dll"
  IMPORTED_IMPLIB "${_prefix}/lib/${_before}TesselSLB_x64${_after}"
  INTERFACE_INCLUDE_DIRECTORIES "${_prefix}/include"
  INTERFACE_COMPILE_DEFINITIONS "$<$<CXX_COMPILER_ID:MSVC>:_ITERATOR_DEBUG_LEVEL=0>"
  INTERFACE_COMPILE_FEATURES cxx_std_17
  INTERFACE_LINK_LIBRARIES oleaut32)

add_library(TesselSLB::Client INTERFACE IMPORTED)
set_target_properties(TesselSLB::Client PROPERTIES
  INTERFACE_COMPILE_FEATURES cxx_std_20
  INTERFACE_LINK_LIBRARIES TesselSLB::TesselSLB)

add_library(TesselSLB::C SHARED IMPORTED)
set_target_properties(TesselSLB::C PROPERTIES
  IMPORTED_LOCATION "${_prefix}/bin/TesselSLB_c.dll"
  IMPORTED_IMPLIB "${_prefix}/lib/${_before}TesselSLB_c${_after}"
  INTERFACE_INCLUDE_DIRECTORIES "${_prefix}/include")
unset(_before)
unset(_after)
unset(_prefix)

# tessel_deploy(TARGET) copies both DLLs into the folder of the program, because Windows looks for them there.
# With MinGW-w64, the program also contains the compiler's own libraries, so that it needs no other DLLs.
function(tessel_deploy target)
  if(MINGW)
    target_link_options(${target} PRIVATE -static)
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E copy_if_different $<TARGET_FILE:TesselSLB::TesselSLB>
      $<TARGET_FILE:TesselSLB::C> $<TARGET_FILE_DIR:${target}> VERBATIM)
endfunction()
