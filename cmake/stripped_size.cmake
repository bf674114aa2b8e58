# cmake -DSTRIP=<strip> [-DREADELF=<readelf>] -DLIB=<libtr104.so> -DOUT=<copy> -DARCH=<processor>
#       -P stripped_size.cmake
# Strips a copy of the library (the build keeps its symbols for debugging), prints its size and
# the shared libraries it needs on the device.
execute_process(COMMAND ${STRIP} --strip-all -o ${OUT} ${LIB} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${STRIP} failed on ${LIB}")
endif()
file(SIZE ${OUT} size)
math(EXPR kib "(${size} + 1023) / 1024")
message(STATUS "stripped libtr104.so (${ARCH}): ${size} bytes (${kib} KiB)")

if(READELF)
  execute_process(COMMAND ${READELF} -d ${OUT} OUTPUT_VARIABLE dynamic RESULT_VARIABLE result)
  if(result EQUAL 0)
    string(REGEX MATCHALL "Shared library: \\[[^]]+\\]" needed "${dynamic}")
    list(TRANSFORM needed REPLACE "Shared library: \\[([^]]+)\\]" "\\1")
    list(JOIN needed " " needed)
    message(STATUS "libtr104.so needs: ${needed}")
  endif()
endif()
