# Debian packages (cpack -G DEB in the build folder), one per install component:
#   libtr104-MAJOR   runtime: libtr104.so.MAJOR, libtr104map.so.MAJOR, the map's data file
#   libtr104-dev     development: headers, the start-up library, CMake package, tr104.pc
#   tr104-tools      tools: tr104-vmemu, tr104ctl, the emulator's systemd unit (not enabled)
# The device build makes the same packages for the mips architecture.  The runtime's package name
# carries the SONAME's major version, every file name the full version.
set(TR104_DEB_RUNTIME libtr104-${PROJECT_VERSION_MAJOR})
if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR MATCHES "^mips")
  set(TR104_DEB_ARCH mips)
else()
  find_program(TR104_DPKG dpkg)
  if(TR104_DPKG)
    execute_process(COMMAND ${TR104_DPKG} --print-architecture OUTPUT_VARIABLE TR104_DEB_ARCH
      OUTPUT_STRIP_TRAILING_WHITESPACE)
  else()
    set(TR104_DEB_ARCH amd64)
  endif()
endif()

set(CPACK_PACKAGE_NAME tr104)
set(CPACK_PACKAGE_VENDOR "libtr104 developers")
set(CPACK_PACKAGE_CONTACT "libtr104 developers <libtr104@localhost>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Voice data-model adapter of an optical network unit")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# Stripped (the build tree keeps the debugging information) and gzip: packing stays fast.
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${TR104_DEB_ARCH})
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The cross toolchain is the host's (glibc 2.36, GCC 12) on both architectures, so the C and C++
# runtimes are named rather than looked up with dpkg-shlibdeps (which cannot see the device's).
set(TR104_DEB_LIBC "libc6 (>= 2.36), libstdc++6 (>= 12), libgcc-s1 (>= 3.0)")
set(TR104_DEB_SAME "${TR104_DEB_RUNTIME} (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${TR104_DEB_RUNTIME})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${TR104_DEB_LIBC}")
# ldconfig after installing and removing a package that carries a shared library.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "Runtime: the shared library a management agent loads, one exported handler per voice\nparameter, and the data-model map (libtr104map) with its table.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtr104-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${TR104_DEB_SAME}")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "Development files: public headers, the runtime's static start-up library, the CMake package\n(find_package(tr104 CONFIG)) and the pkg-config file tr104.pc.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tr104-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${TR104_DEB_SAME}, ${TR104_DEB_LIBC}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
  "Tools: tr104-vmemu plays the voice module on this machine's channel (with a state file\nand a control socket; a systemd unit, not enabled); tr104ctl calls any handler.")
include(CPack)
