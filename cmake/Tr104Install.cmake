# Installation: the runtime (libtr104.so and libtr104map.so, versioned, with the map's data file),
# the development files (headers, the start-up library, the CMake package and tr104.pc) and the
# tools (emulator, client, systemd unit).  Components: runtime, development, tools.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(TR104_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tr104)
set(TR104_DATA_DIR ${CMAKE_INSTALL_DATADIR}/tr104)

# libtr104.so.MAJOR is the SONAME; the unversioned name (the link-time name) is a development file.
set_target_properties(tr104 tr104map PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
# The map library finds libtr104 beside itself wherever the tree is installed.
set_target_properties(tr104map PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(tr104map PROPERTIES EXPORT_NAME map)
set_target_properties(v2lin_start PROPERTIES EXPORT_NAME v2lin)
foreach(target tr104 tr104map v2lin_start)
  target_include_directories(${target} INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
endforeach()

install(TARGETS tr104 tr104map EXPORT tr104Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS v2lin_start EXPORT tr104Targets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(FILES ${TR104_MAP_ALL_TSV} DESTINATION ${TR104_DATA_DIR} COMPONENT runtime)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ ${PROJECT_BINARY_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_SOURCE_DIR}/v2lin/start/v2lin_start.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

install(EXPORT tr104Targets NAMESPACE tr104:: DESTINATION ${TR104_CMAKE_DIR} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/install/tr104Config.cmake.in
  ${PROJECT_BINARY_DIR}/tr104Config.cmake INSTALL_DESTINATION ${TR104_CMAKE_DIR} PATH_VARS TR104_DATA_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/tr104ConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/tr104Config.cmake ${PROJECT_BINARY_DIR}/tr104ConfigVersion.cmake
  DESTINATION ${TR104_CMAKE_DIR} COMPONENT development)

# tr104.pc finds its prefix from where it lies, so that the installed tree can be moved.
file(RELATIVE_PATH TR104_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(${PROJECT_SOURCE_DIR}/cmake/install/tr104.pc.in ${PROJECT_BINARY_DIR}/tr104.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tr104.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

if(TARGET tr104-vmemu AND TARGET tr104ctl)
  # The tools find the libraries in the installed tree, whatever its prefix.
  set_target_properties(tr104-vmemu tr104ctl PROPERTIES
    INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  target_compile_definitions(tr104ctl PRIVATE
    TR104_INSTALL_LIBDIR_FROM_BIN="../${CMAKE_INSTALL_LIBDIR}"
    TR104_SONAME="libtr104.so.${PROJECT_VERSION_MAJOR}")
  install(TARGETS tr104-vmemu tr104ctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
  # The unit names the emulator by the prefix of the install (a package's is /usr), not the
  # prefix the build was configured with: it is written at install time, straight into the
  # installed tree (an install and a package built at once do not share a file).
  install(CODE "set(TR104_BINDIR \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
    set(unit \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/lib/systemd/system/tr104-vmemu.service\")
    message(STATUS \"Installing: \${unit}\")
    configure_file(${PROJECT_SOURCE_DIR}/tools/systemd/tr104-vmemu.service \${unit} @ONLY)" COMPONENT tools)
endif()
