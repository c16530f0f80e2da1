# CMake functions that help to build the DLLs and tools of this project.
enable_language(RC)

# Builds everything that users get.
add_custom_target(product)

# tessel_version_resource(VARIABLE NAME FILE DESCRIPTION) makes the source of a DLL's version resource and
# stores the path of this source in the variable.
function(tessel_version_resource variable name file description)
  set(resource ${PROJECT_BINARY_DIR}/generated/${name}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/Version.rc.in ${resource} @ONLY)
  set(${variable} ${resource} PARENT_SCOPE)
endfunction()

# tessel_microsoft_import_library(TARGET NAME DEFINITIONS) makes the import library NAME.lib for the DLL
# NAME.dll from an export definition file. Microsoft's linkers need it, because they cannot read the import
# library that GNU's linker writes.
function(tessel_microsoft_import_library target name definitions)
  if(MSVC)
    return()
  endif()
  find_program(TESSEL_DLLTOOL llvm-dlltool)
  if(NOT TESSEL_DLLTOOL)
    message(FATAL_ERROR "llvm-dlltool, which makes ${name}.lib, was not found: install llvm")
  endif()
  set(library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/${name}.lib)
  add_custom_command(OUTPUT ${library}
    COMMAND ${TESSEL_DLLTOOL} -m i386:x86-64 -d ${definitions} -l ${library}
    DEPENDS ${definitions} VERBATIM)
  add_custom_target(${target}_lib ALL DEPENDS ${library})
  add_dependencies(product ${target}_lib)
endfunction()

# tessel_product(TARGET) completes a DLL or a program that users get. Moves its debug information into a file in
# the folder debug of the build folder, named after the DLL or program with ".debug" at the end. The GNU debugger
# finds the debug information when this file lies beside the DLL or program.
function(tessel_product target)
  add_dependencies(product ${target})
  if(MSVC)
    return()
  endif()
  set(folder ${PROJECT_BINARY_DIR}/debug)
  file(MAKE_DIRECTORY ${folder})
  set(file $<TARGET_FILE_NAME:${target}>.debug)
  # Without SOURCE_DATE_EPOCH, objcopy writes the current time into the files, and no two builds are the same.
  set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${objcopy} --only-keep-debug $<TARGET_FILE:${target}> ${file}
    COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${file} $<TARGET_FILE:${target}>
    WORKING_DIRECTORY ${folder} VERBATIM)
endfunction()

# tessel_load_module_late(TARGET) links the program TARGET with the module. The program loads the module only when
# it first calls a function of the module.
function(tessel_load_module_late target)
  if(MSVC)
    target_link_libraries(${target} PRIVATE TesselSLB delayimp)
    target_link_options(${target} PRIVATE /DELAYLOAD:TesselSLB_x64.dll)
    return()
  endif()
  set(library ${CMAKE_CURRENT_BINARY_DIR}/libTesselSLB_late.a)
  set(definitions ${PROJECT_BINARY_DIR}/generated/TesselSLB.def)
  # dlltool writes the name of its output file into the symbols. The command runs in the folder of that file, so
  # that the name needs no path.
  add_custom_command(OUTPUT ${library}
    COMMAND ${CMAKE_DLLTOOL} -d ${definitions} -D TesselSLB_x64.dll --output-delaylib libTesselSLB_late.a
    WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} DEPENDS TesselSLB ${definitions} VERBATIM)
  add_custom_target(${target}_late DEPENDS ${library})
  add_dependencies(${target} ${target}_late TesselSLB)
  target_link_libraries(${target} PRIVATE ${library})
endfunction()
