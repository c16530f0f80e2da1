# Installs the module, the files that clients need to use it, and the tools. The installed folder can be
# moved.
include(CMakePackageConfigHelpers)

install(TARGETS TesselSLB TesselSLB_c SceneBroker tessel
  RUNTIME DESTINATION bin ARCHIVE DESTINATION lib FILE_SET HEADERS DESTINATION include)
if(NOT MSVC)
  install(FILES ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/TesselSLB_x64.lib
    ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/TesselSLB_c.lib DESTINATION lib)
endif()

# The headers of the C++ client library are installed into include/tessel and include "wire/...". The
# compiler looks beside the including header first, so the headers of wire/ go into include/tessel/wire.
install(DIRECTORY clients/cpp/tessel DESTINATION include FILES_MATCHING PATTERN *.h)
install(FILES wire/Addresses.h wire/Statuses.h DESTINATION include/tessel/wire)

write_basic_package_version_file(generated/TesselSLBConfigVersion.cmake COMPATIBILITY SameMajorVersion)
configure_file(cmake/TesselSLB.pc.in generated/TesselSLB.pc @ONLY)
configure_file(cmake/TesselSLB_c.pc.in generated/TesselSLB_c.pc @ONLY)
install(FILES cmake/TesselSLBConfig.cmake ${PROJECT_BINARY_DIR}/generated/TesselSLBConfigVersion.cmake
  DESTINATION lib/cmake/TesselSLB)
install(FILES ${PROJECT_BINARY_DIR}/generated/TesselSLB.pc
  ${PROJECT_BINARY_DIR}/generated/TesselSLB_c.pc DESTINATION lib/pkgconfig)
