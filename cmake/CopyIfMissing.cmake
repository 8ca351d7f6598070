# cmake -DSOURCE=... -DTARGET=... -P CopyIfMissing.cmake
if(NOT EXISTS "${TARGET}")
  configure_file("${SOURCE}" "${TARGET}" COPYONLY)
endif()
