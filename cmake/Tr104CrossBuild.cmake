# Hooks of the cross build, included by the first project() call through
# CMAKE_PROJECT_TOP_LEVEL_INCLUDES (see the "mips" preset in CMakePresets.json):
#  - provides GoogleTest built for the target (scripts/build-mips-deps.sh, run with the same
#    toolchain file) when the tests are built, and lets find_package() see it;
#  - after every build, prints the size of the stripped libtr104.so, the figure that counts
#    against the device's flash.
if(NOT CMAKE_CROSSCOMPILING OR NOT CMAKE_TOOLCHAIN_FILE)
  message(FATAL_ERROR "Tr104CrossBuild.cmake is for cross builds: give a toolchain file")
endif()

set(TR104_CROSS_DEPS_PREFIX "${CMAKE_BINARY_DIR}/deps" CACHE PATH
    "Prefix of the test framework built for the target")

if(NOT DEFINED TR104_BUILD_TESTS OR TR104_BUILD_TESTS)
  execute_process(
    COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/../scripts/build-mips-deps.sh
            ${CMAKE_TOOLCHAIN_FILE} ${TR104_CROSS_DEPS_PREFIX}
    RESULT_VARIABLE tr104_deps_result)
  if(NOT tr104_deps_result EQUAL 0)
    message(FATAL_ERROR "building GoogleTest for the target failed")
  endif()
  list(APPEND CMAKE_FIND_ROOT_PATH ${TR104_CROSS_DEPS_PREFIX})
endif()

function(tr104_report_stripped_size)
  if(NOT TARGET tr104)
    return()
  endif()
  add_custom_target(tr104_stripped_size ALL
    COMMAND ${CMAKE_COMMAND} -DSTRIP=${CMAKE_STRIP} -DLIB=$<TARGET_FILE:tr104>
            -DOUT=${CMAKE_BINARY_DIR}/libtr104.stripped.so -DARCH=${CMAKE_SYSTEM_PROCESSOR}
            -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/stripped_size.cmake
    DEPENDS tr104
    COMMENT "Stripping a copy of libtr104.so"
    VERBATIM)
endfunction()
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL tr104_report_stripped_size)
