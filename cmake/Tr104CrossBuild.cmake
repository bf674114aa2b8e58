# Hooks of the cross build, included by the first project() call through
# CMAKE_PROJECT_TOP_LEVEL_INCLUDES (see the "mips" preset in CMakePresets.json):
#  - provides GoogleTest built for the target (scripts/build-mips-deps.sh, run with the same
#    toolchain file) when the tests are built, and lets find_package() see it;
#  - links the build's programs (tests, tools) with libatomic where the target needs it;
#  - after every build, prints the size of the stripped libtr104.so, the figure that counts
#    against the device's flash, and the shared libraries it needs.
if(NOT CMAKE_CROSSCOMPILING OR NOT CMAKE_TOOLCHAIN_FILE)
  message(FATAL_ERROR "Tr104CrossBuild.cmake is for cross builds: give a toolchain file")
endif()

set(TR104_CROSS_DEPS_PREFIX "${CMAKE_BINARY_DIR}/deps" CACHE PATH
    "Prefix of the test framework built for the target")

if(NOT DEFINED TR104_BUILD_TESTS OR TR104_BUILD_TESTS)
  if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
    message(FATAL_ERROR "the tests of a cross build run through an emulator: set "
                        "CMAKE_CROSSCOMPILING_EMULATOR in the toolchain file (for the device: "
                        "install qemu-user), or configure with -DTR104_BUILD_TESTS=OFF")
  endif()
  execute_process(
    COMMAND bash ${CMAKE_CURRENT_LIST_DIR}/../scripts/build-mips-deps.sh
            ${CMAKE_TOOLCHAIN_FILE} ${TR104_CROSS_DEPS_PREFIX}
    RESULT_VARIABLE tr104_deps_result)
  if(NOT tr104_deps_result EQUAL 0)
    message(FATAL_ERROR "building GoogleTest for the target failed")
  endif()
  list(APPEND CMAKE_FIND_ROOT_PATH ${TR104_CROSS_DEPS_PREFIX})
endif()

# Every executable target of a directory and of the directories below it.
function(tr104_collect_executables dir out)
  set(found "")
  get_property(targets DIRECTORY ${dir} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(t ${targets})
    get_target_property(type ${t} TYPE)
    if(type STREQUAL "EXECUTABLE")
      list(APPEND found ${t})
    endif()
  endforeach()
  get_property(subdirs DIRECTORY ${dir} PROPERTY SUBDIRECTORIES)
  foreach(sub ${subdirs})
    tr104_collect_executables(${sub} below)
    list(APPEND found ${below})
  endforeach()
  set(${out} ${found} PARENT_SCOPE)
endfunction()

# A 32-bit MIPS core has no 8-byte atomic instructions: std::atomic<int64_t> and the like become
# calls into libatomic.  Test and tool programs may use them, so they link libatomic where it is
# needed (--as-needed drops it elsewhere).  The library does not get it: it links with
# --no-undefined, so a 64-bit atomic in the library fails to link instead of silently adding a
# dependency to the device's flash.
function(tr104_link_programs_with_libatomic)
  tr104_collect_executables(${CMAKE_SOURCE_DIR} programs)
  foreach(t ${programs})
    target_link_libraries(${t} PRIVATE "-Wl,--push-state,--as-needed" atomic "-Wl,--pop-state")
  endforeach()
endfunction()

function(tr104_report_stripped_size)
  if(NOT TARGET tr104)
    return()
  endif()
  add_custom_target(tr104_stripped_size ALL
    COMMAND ${CMAKE_COMMAND} -DSTRIP=${CMAKE_STRIP} -DREADELF=${CMAKE_READELF} -DLIB=$<TARGET_FILE:tr104>
            -DOUT=${CMAKE_BINARY_DIR}/libtr104.stripped.so -DARCH=${CMAKE_SYSTEM_PROCESSOR}
            -P ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/stripped_size.cmake
    DEPENDS tr104
    COMMENT "Stripping a copy of libtr104.so"
    VERBATIM)
endfunction()

cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL tr104_link_programs_with_libatomic)
cmake_language(DEFER DIRECTORY ${CMAKE_SOURCE_DIR} CALL tr104_report_stripped_size)
