# cmake -DSTRIP=<strip> -DLIB=<libtr104.so> -DOUT=<copy> -DARCH=<processor> -P stripped_size.cmake
# Strips a copy of the library (the build keeps its symbols for debugging) and prints its size.
execute_process(COMMAND ${STRIP} --strip-all -o ${OUT} ${LIB} RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${STRIP} failed on ${LIB}")
endif()
file(SIZE ${OUT} size)
math(EXPR kib "(${size} + 1023) / 1024")
message(STATUS "stripped libtr104.so (${ARCH}): ${size} bytes (${kib} KiB)")
