# What `cmake --install` puts down: the server and the command, component trovi-mcp, and for programs that
# link the library component TroviCore. Its package and pkg-config file find their way from where they lie,
# so the folder may be moved.

# Debian's tools look for libraries here, below /usr and below /usr/local.
if(PROJECT_IS_TOP_LEVEL AND CMAKE_LIBRARY_ARCHITECTURE AND EXISTS "/etc/debian_version"
    AND NOT DEFINED CMAKE_INSTALL_LIBDIR)
  set(CMAKE_INSTALL_LIBDIR "lib/${CMAKE_LIBRARY_ARCHITECTURE}" CACHE PATH "Folder of libraries")
endif()
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(package_destination "${CMAKE_INSTALL_LIBDIR}/cmake/TroviCore")
set(package_files "${PROJECT_BINARY_DIR}/package")

# Whatever the umask, every user may enter the folders that are made for a component. CMake's own
# CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS still gives them mode 0700 under umask 077.
function(trovi_install_folders component)
  foreach(folder IN LISTS ARGN)
    install(CODE "execute_process(COMMAND sh -c [[umask 022; mkdir -p \"$0\"]]
      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")" COMPONENT ${component})
  endforeach()
endfunction()
trovi_install_folders(TroviCore "${CMAKE_INSTALL_INCLUDEDIR}/TroviCore" "${package_destination}"
  "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# CMake before 3.23 knows no file sets, and needs to be told the folder of the headers.
install(TARGETS TroviCore EXPORT TroviCoreTargets COMPONENT TroviCore
  FILE_SET HEADERS COMPONENT TroviCore INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT TroviCoreTargets NAMESPACE Trovi:: DESTINATION "${package_destination}"
  COMPONENT TroviCore)

configure_package_config_file(cmake/TroviCoreConfig.cmake.in
  "${package_files}/TroviCoreConfig.cmake" INSTALL_DESTINATION "${package_destination}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${package_files}/TroviCoreConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES "${package_files}/TroviCoreConfig.cmake"
  "${package_files}/TroviCoreConfigVersion.cmake" cmake/FindTroviLibraries.cmake
  DESTINATION "${package_destination}" COMPONENT TroviCore)

# A static library's needs are its users' needs, whether or not they ask for `--static`.
if(NOT BUILD_SHARED_LIBS)
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

# The executables find a shared library of ours where it was installed with them.
if(TROVI_BUILD_SERVER)
  trovi_install_folders(trovi-mcp "${CMAKE_INSTALL_BINDIR}")
  install(TARGETS trovi-mcp trovi COMPONENT trovi-mcp)
  if(BUILD_SHARED_LIBS)
    file(RELATIVE_PATH libdir_from_bindir
      "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(trovi-mcp trovi PROPERTIES INSTALL_RPATH
      "$<IF:$<BOOL:${APPLE}>,@loader_path,$ORIGIN>/${libdir_from_bindir}")
  endif()
endif()
