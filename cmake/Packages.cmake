# What packages contain beside the programs and the library, and the packages, which Scripts/package makes
# in packages/ of the build tree:
#   trovi-mcp_*.deb, libtrovicore-dev_*.deb   by cpack, if dpkg-dev and file are installed
#   trovi-mcp-*.tar.gz                        by cpack: the same server, to be unpacked anywhere
#   trovi-*.mcpb                              by the target bundle: for desktop assistants

include(packaging/owner.cmake)
string(TOLOWER "${CMAKE_SYSTEM_NAME}" system)
# A cross compiler names its processor only in the folder of its libraries.
set(TROVI_PROCESSOR "" CACHE STRING "Processor that the packages name, if not the compiler's")
set(processor "${CMAKE_SYSTEM_PROCESSOR}")
if(TROVI_PROCESSOR)
  set(processor "${TROVI_PROCESSOR}")
elseif(CMAKE_LIBRARY_ARCHITECTURE)
  string(REGEX MATCH "^[^-]+" processor "${CMAKE_LIBRARY_ARCHITECTURE}")
endif()
set(generated "${PROJECT_BINARY_DIR}/packaging")

# Our licence, and those of the libraries inside the executables, from Debian's packages or Homebrew.
file(READ LICENSE copyright)
if(TROVI_STATIC_DEPENDENCIES)
  string(APPEND copyright "\nThe executables contain utf8proc. Those for Linux also contain SQLite, libuuid "
    "and GCC's libstdc++.\nTheir copyright and licences follow, as the packages that they come from state "
    "them.\n")
  file(REAL_PATH "${Trovi_utf8proc_LIBRARY}" library)
  string(REGEX MATCH "^.*/Cellar/utf8proc/[^/]+" keg "${library}")
  file(GLOB licences "${keg}/LICENSE*")
  if(NOT keg)
    set(licences libsqlite3-dev libutf8proc-dev uuid-dev libstdc++6)
    list(TRANSFORM licences REPLACE "(.+)" "/usr/share/doc/\\1/copyright")
  elseif(NOT licences)
    set(CPACK_TROVI_REFUSAL "Homebrew's utf8proc has no LICENSE, which packages must contain")
  endif()
  foreach(file IN LISTS licences)
    if(EXISTS "${file}")
      file(READ "${file}" licence)
      string(APPEND copyright "\n\n---- ${file} ----\n\n${licence}")
    endif()
  endforeach()
endif()
file(WRITE "${generated}/copyright" "${copyright}")

# Members of the manifest that the owner has filled in.
foreach(member license homepage documentation support)
  string(TOUPPER "TROVI_${member}" value)
  if(${value})
    string(APPEND owner_members "\n  \"${member}\": \"${${value}}\",")
  endif()
endforeach()
if(TROVI_REPOSITORY)
  string(APPEND owner_members
    "\n  \"repository\": {\"type\": \"git\", \"url\": \"${TROVI_REPOSITORY}\"},")
endif()

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH if it is set
string(TIMESTAMP day "%Y-%m-%d" UTC)
configure_file(packaging/changelog.in "${generated}/changelog" @ONLY)
configure_file(packaging/manifest.json.in "${generated}/manifest.json" @ONLY)
configure_file(packaging/en-US.json.in "${generated}/mcpb-resources/en-US.json" @ONLY)
configure_file(packaging/trovi-mcp.1.in "${generated}/trovi-mcp.1" @ONLY)
execute_process(COMMAND gzip -9nf changelog trovi-mcp.1 WORKING_DIRECTORY "${generated}"
  COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE)

# Both components, which Install.cmake begins, get what Debian asks for.
set(document_folder "${CMAKE_INSTALL_DATAROOTDIR}/doc")
trovi_install_folders(TroviCore "${document_folder}/libtrovicore-dev")
trovi_install_folders(trovi-mcp "${document_folder}/trovi-mcp" "${CMAKE_INSTALL_MANDIR}/man1"
  "${CMAKE_INSTALL_LIBEXECDIR}/trovi-mcp")
set(documents "${generated}/copyright" "${generated}/changelog.gz" CHANGELOG.md)
install(FILES ${documents} DESTINATION "${document_folder}/trovi-mcp" COMPONENT trovi-mcp)
install(FILES ${documents} DESTINATION "${document_folder}/libtrovicore-dev" COMPONENT TroviCore)
install(FILES "${generated}/trovi-mcp.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
  COMPONENT trovi-mcp)
set(CPACK_PACKAGE_FILE_NAME "trovi-mcp-${PROJECT_VERSION}-${system}-${processor}")
configure_file(cmake/InstallPages.cmake.in "${generated}/InstallPages.cmake" @ONLY)
install(SCRIPT "${generated}/InstallPages.cmake" COMPONENT trovi-mcp)
if(TARGET recorder)
  install(TARGETS recorder RUNTIME DESTINATION "${CMAKE_INSTALL_LIBEXECDIR}/trovi-mcp"
    COMPONENT trovi-mcp)
endif()

# The bundle is an archive in zip's format, which stores local times. Programs that unpack bundles fail on
# entries for folders, so it names its files.
install(TARGETS trovi-mcp RUNTIME DESTINATION server COMPONENT bundle EXCLUDE_FROM_ALL)
install(FILES "${generated}/manifest.json" packaging/icon.png "${generated}/copyright" DESTINATION .
  COMPONENT bundle EXCLUDE_FROM_ALL)
install(DIRECTORY "${generated}/mcpb-resources" DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)
set(TROVI_BUNDLE
  "${PROJECT_BINARY_DIR}/packages/trovi-${PROJECT_VERSION}-${system}-${processor}.mcpb")
add_custom_target(bundle
  COMMAND "${CMAKE_COMMAND}" --install "${PROJECT_BINARY_DIR}" --component bundle --strip
    --prefix "${generated}/bundle"
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/packages"
  COMMAND "${CMAKE_COMMAND}" -E chdir "${generated}/bundle" "${CMAKE_COMMAND}" -E env TZ=UTC
    "${CMAKE_COMMAND}" -E tar cf "${TROVI_BUNDLE}" --format=zip
    manifest.json icon.png copyright mcpb-resources/en-US.json server/trovi-mcp
  VERBATIM)
add_dependencies(bundle trovi-mcp)

# macOS runs only signed executables, and strip and lipo remove the linker's signature.
if(APPLE)
  install(CODE "
    file(GLOB executables \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/trovi-mcp\"
      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBEXECDIR}/trovi-mcp/recorder\"
      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/server/trovi-mcp\")
    if(executables)
      execute_process(COMMAND codesign --force --sign - \${executables} COMMAND_ERROR_IS_FATAL ANY)
    endif()"
    ALL_COMPONENTS)
endif()

set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/PackageKinds.cmake")
set(CPACK_GENERATOR TGZ)
if(BUILD_SHARED_LIBS)
  set(CPACK_TROVI_REFUSAL "packages hold the static library: configure with BUILD_SHARED_LIBS=OFF")
endif()
find_program(TROVI_SHLIBDEPS dpkg-shlibdeps)
find_program(TROVI_FILE file)
mark_as_advanced(TROVI_SHLIBDEPS TROVI_FILE)
if(TROVI_SHLIBDEPS AND TROVI_FILE)
  list(APPEND CPACK_GENERATOR DEB)
elseif(system STREQUAL "linux")
  message(STATUS "cpack will make no .deb here: it needs Debian's packages dpkg-dev and file")
endif()
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_NAME trovi)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each Debian package has its own
set(CPACK_PACKAGE_CONTACT "${TROVI_MAINTAINER}")
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
if(TROVI_SHLIBDEPS AND CMAKE_LIBRARY_ARCHITECTURE)
  execute_process(COMMAND dpkg-architecture -t "${CMAKE_LIBRARY_ARCHITECTURE}" -q DEB_HOST_ARCH
    OUTPUT_VARIABLE CPACK_DEBIAN_PACKAGE_ARCHITECTURE OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
endif()
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_NAME trovi-mcp)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TROVI-MCP_DESCRIPTION "${PROJECT_DESCRIPTION}
A recording application transcribes spoken notes and files them. Through this
local server of the Model Context Protocol an AI assistant lists, reads,
claims, resolves and searches them. The texts are in one SQLite file on this
machine, the recordings in a folder beside it; the server opens no connection.")
set(CPACK_DEBIAN_TROVICORE_PACKAGE_NAME libtrovicore-dev)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_DEPENDS "libsqlite3-dev, libutf8proc-dev, uuid-dev")
set(CPACK_DEBIAN_TROVICORE_DESCRIPTION "C++ library for the inbox of your voice notes
The inbox with its schema, messages, destinations and synchronisation, for
programs that share it with the server trovi-mcp: a static library with its
headers, a package for CMake and one for pkg-config.")
include(CPack)
