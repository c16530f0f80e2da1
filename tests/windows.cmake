# The suites that need Windows. Most of them share one Wine prefix, and set no other log level there than VERBOSE.
# Suites that set other levels share a second Wine prefix. The lock "level" makes them run one at a time.

add_compile_definitions(TESSEL_SCENES="${PROJECT_SOURCE_DIR}/tools/scenes"
  TESSEL_TRANSCRIPTS="${CMAKE_CURRENT_SOURCE_DIR}/transcripts"
  TESSEL_SOURCE="${PROJECT_SOURCE_DIR}")

tessel_test(log LIBRARIES tessel_module)
tessel_test(diagnosis LIBRARIES tessel_scene TesselSLB oleaut32)
add_dependencies(diagnosis_test SceneBroker tessel)
set_tests_properties(log diagnosis PROPERTIES RESOURCE_LOCK level
  ENVIRONMENT "TESSEL_WINEPREFIX=${PROJECT_SOURCE_DIR}/build/wine-level")

tessel_test(archive LIBRARIES tessel_utility)
tessel_test(pipe LIBRARIES tessel_utility soak_counters)
tessel_test(types LIBRARIES tessel_module)
tessel_test(address LIBRARIES tessel_module)
tessel_test(exports LIBRARIES version)
add_dependencies(exports_test TesselSLB TesselSLB_c)

# test_parts takes the place of the programs that the module starts or talks to. The module finds these
# programs by name in fixed places, so suites that use them run one at a time (RESOURCE_LOCK).
add_executable(test_parts parts.cpp)
target_include_directories(test_parts PRIVATE .)
target_link_libraries(test_parts PRIVATE tessel_client_headers TesselSLB)
tessel_test(startup LIBRARIES tessel_module PROPERTIES RESOURCE_LOCK launcher)
add_dependencies(startup_test test_parts)
tessel_test(element LIBRARIES TesselSLB oleaut32)
add_dependencies(element_test test_parts)
tessel_test(search LIBRARIES TesselSLB oleaut32 shell32 PROPERTIES RESOURCE_LOCK launcher)
add_dependencies(search_test test_parts tessel)

# In the suites "client" and "c", brokers die. A call to a dead broker must fail soon, so the time limit of
# these two suites is only 60 s.
tessel_test(client LIBRARIES tessel_client oleaut32 PROPERTIES RESOURCE_LOCK launcher TIMEOUT 60)
add_dependencies(client_test test_parts)
add_dependencies(diagnosis_test test_parts)

tessel_test(c LIBRARIES TesselSLB_c TesselSLB oleaut32 PROPERTIES RESOURCE_LOCK launcher TIMEOUT 60)
add_dependencies(c_test test_parts)

foreach(tool scenebroker inspector recording)
  tessel_test(${tool} LIBRARIES tessel_scene tessel_recording tessel_client oleaut32
    PROPERTIES RESOURCE_LOCK "launcher;scenes")
  add_dependencies(${tool}_test SceneBroker tessel)
endforeach()
tessel_test(fault LIBRARIES tessel_faults tessel_client oleaut32)
add_dependencies(fault_test SceneBroker)
tessel_test(windows LIBRARIES TesselSLB)
# This suite must not run together with other suites that have the lock "launcher". It serves content without
# an address. Some of those suites serve an address without a known scheme. Both use the same pipe.
tessel_test(channel LIBRARIES TesselSLB PROPERTIES RESOURCE_LOCK launcher)
add_dependencies(channel_test test_parts)

# Programs in C++ and in C that print the same report.
enable_language(C)
set(CMAKE_C_STANDARD 11)
foreach(language cpp c)
  add_executable(report_${language} clients/report.${language})
endforeach()
target_link_libraries(report_cpp PRIVATE tessel_client oleaut32)
target_link_options(report_cpp PRIVATE -municode)
target_link_libraries(report_c PRIVATE TesselSLB_c)

# Tests that are scripts: the same report by each client library, Ctrl-C, the tests and samples that the
# documents name, the log level that `tessel log` sets, a client for Microsoft's ABI, the npm package, and the
# package for users.
foreach(script clients ctrl_c docs log_level msabi node package)
  add_test(NAME ${script} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/${script}/run.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(${script} PROPERTIES TIMEOUT 200)
endforeach()
set_tests_properties(clients package PROPERTIES RESOURCE_LOCK scenes)
set_tests_properties(package PROPERTIES TIMEOUT 400)
set_tests_properties(log_level PROPERTIES RESOURCE_LOCK level
  ENVIRONMENT "TESSEL_WINEPREFIX=${PROJECT_SOURCE_DIR}/build/wine-level")
# This test ends `tessel tap` while clients call a broker through it. After that, these clients look for a
# launcher.
set_tests_properties(ctrl_c PROPERTIES RESOURCE_LOCK launcher)
# The first run makes a Wine prefix and fetches packages. Without access to the npm registry it is skipped.
set_tests_properties(node PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 400)

add_subdirectory(${PROJECT_SOURCE_DIR}/soak ${PROJECT_BINARY_DIR}/soak)
