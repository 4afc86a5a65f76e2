# Writes the source of what `tavelo --version` tells, at every build: CMake doesn't know of a new commit. Sources that
# are no checkout of their own have none. SOURCE, OUTPUT, VERSION and COMPILER are given.
file(REAL_PATH ${SOURCE} SOURCE)
set(commit "unknown")
execute_process(COMMAND git -C ${SOURCE} rev-parse --show-toplevel
  OUTPUT_VARIABLE top OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(top STREQUAL SOURCE)
  execute_process(COMMAND git -C ${SOURCE} describe --always --dirty --abbrev=10 --exclude=*
    OUTPUT_VARIABLE commit OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/version_text.cc.in ${OUTPUT} @ONLY)
