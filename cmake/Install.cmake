# What `cmake --install` puts down: the server, component trovi-mcp, and for programs that link the
# library component TroviCore. Its package and pkg-config file find their way from where they lie,
# so the folder may be moved.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/TroviCore")
set(package_files "${PROJECT_BINARY_DIR}/package")
get_target_property(library_type TroviCore TYPE)

install(TARGETS TroviCore EXPORT TroviCoreTargets COMPONENT TroviCore FILE_SET HEADERS
  COMPONENT TroviCore)
install(EXPORT TroviCoreTargets NAMESPACE Trovi:: DESTINATION "${package_folder}"
  COMPONENT TroviCore)

configure_package_config_file(cmake/TroviCoreConfig.cmake.in
  "${package_files}/TroviCoreConfig.cmake" INSTALL_DESTINATION "${package_folder}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${package_files}/TroviCoreConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${package_files}/TroviCoreConfig.cmake"
  "${package_files}/TroviCoreConfigVersion.cmake" cmake/FindTroviLibraries.cmake
  DESTINATION "${package_folder}" COMPONENT TroviCore)

# A static library's needs are its users' needs, whether or not they ask for `--static`.
if(library_type STREQUAL "STATIC_LIBRARY")
  set(pc_requires "sqlite3 libutf8proc")
  if(NOT APPLE)
    string(APPEND pc_requires " uuid")
  endif()
  set(pc_libs " -pthread")
endif()
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/TroviCore.pc.in "${package_files}/TroviCore.pc" @ONLY)
install(FILES "${package_files}/TroviCore.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
  COMPONENT TroviCore)

# The server finds a shared library of ours where it was installed with it.
if(TROVI_BUILD_SERVER)
  install(TARGETS trovi-mcp COMPONENT trovi-mcp)
  if(library_type STREQUAL "SHARED_LIBRARY")
    file(RELATIVE_PATH libdir_from_bindir
      "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(trovi-mcp PROPERTIES INSTALL_RPATH
      "$<IF:$<BOOL:${APPLE}>,@loader_path,$ORIGIN>/${libdir_from_bindir}")
  endif()
endif()
