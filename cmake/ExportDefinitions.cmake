# Run with cmake -DFROM=... -DLIBRARY=... -DNM=... -DTO=... -P. Makes the export definition file TO from the
# export definition file FROM, for a module that is built with GCC or Clang. TO exports each element function
# in LIBRARY under two names: the name that GCC gives the function (Itanium ABI), and the name that Microsoft's
# compiler gives it. GCC cannot produce the second name, so FROM must contain it for each function. NM is the
# program that lists the symbols of a library.
execute_process(COMMAND ${NM} --defined-only --extern-only ${LIBRARY}
  OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "_ZN17TesselSilverlight[0-9][^\r\n]*" symbols "${symbols}")
file(READ ${FROM} text)
foreach(symbol IN LISTS symbols)
  string(REGEX MATCH "Silverlight([0-9]+)(.*)" match ${symbol})
  string(SUBSTRING "${CMAKE_MATCH_2}" 0 ${CMAKE_MATCH_1} function)
  string(REGEX REPLACE "(\"[?]${function}@TesselSilverlight@@[^\"]*\")" "${symbol}\n  \\1 = ${symbol}"
    extended "${text}")
  if(extended STREQUAL text)
    message(FATAL_ERROR "${FROM} has no Microsoft name for ${function}: see docs/contributing.md")
  endif()
  set(text "${extended}")
endforeach()
file(WRITE ${TO} "${text}")
