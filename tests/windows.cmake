# The suites that need Windows. Those that change the log level run in a Wine prefix of their own; in
# the common one every suite sets VERBOSE.
set(levelPrefix "WINEPREFIX=${PROJECT_SOURCE_DIR}/build/wine-level")
