# The packages, which `cpack` makes in packages/ of the build tree:
#   trovi-mcp_*.deb, libtrovicore-dev_*.deb   if dpkg-dev and file are installed
#   trovi-mcp-*.tar.gz                        the same server, to be unpacked anywhere
#   trovi-*.mcpb                              the bundle that desktop assistants install

include(packaging/owner.cmake)
string(TOLOWER "${CMAKE_SYSTEM_NAME}" platform)
# A cross compiler names its processor only in the folder of its libraries.
set(TROVI_PROCESSOR "" CACHE STRING "Processor that the packages name, if not the compiler's")
set(processor "${CMAKE_SYSTEM_PROCESSOR}")
if(TROVI_PROCESSOR)
  set(processor "${TROVI_PROCESSOR}")
elseif(CMAKE_LIBRARY_ARCHITECTURE)
  string(REGEX MATCH "^[^-]+" processor "${CMAKE_LIBRARY_ARCHITECTURE}")
endif()
set(CPACK_PACKAGE_FILE_NAME "trovi-mcp-${PROJECT_VERSION}-${platform}-${processor}")
set(CPACK_TROVI_BUNDLE_NAME "trovi-${PROJECT_VERSION}-${platform}-${processor}")
set(made "${PROJECT_BINARY_DIR}/packaging")
file(MAKE_DIRECTORY "${made}")

# The licences of the libraries inside the executable, from Debian's packages or from Homebrew.
file(READ packaging/copyright copyright)
if(TROVI_STATIC_DEPENDENCIES)
  foreach(package libsqlite3-dev libutf8proc-dev uuid-dev libstdc++6)
    if(EXISTS "/usr/share/doc/${package}/copyright")
      file(READ "/usr/share/doc/${package}/copyright" licence)
      string(APPEND copyright "\n\n---- ${package} ----\n\n${licence}")
    endif()
  endforeach()
  file(REAL_PATH "${Trovi_utf8proc_LIBRARY}" library)
  if(library MATCHES "^(.*/Cellar/.*)/lib/[^/]*[.]a$")
    file(GLOB licences "${CMAKE_MATCH_1}/LICENSE*")
    foreach(file IN LISTS licences)
      file(READ "${file}" licence)
      string(APPEND copyright "\n\n---- utf8proc ----\n\n${licence}")
    endforeach()
    if(NOT licences)
      set(CPACK_TROVI_REFUSAL "Homebrew's utf8proc has no LICENSE, which packages must contain")
    endif()
  endif()
endif()
file(WRITE "${made}/copyright" "${copyright}")

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
configure_file(packaging/changelog.in "${made}/changelog" @ONLY)
configure_file(packaging/manifest.json.in "${made}/manifest.json" @ONLY)
configure_file(packaging/trovi-mcp.1.in "${made}/trovi-mcp.1" @ONLY)
execute_process(COMMAND gzip -9nf changelog trovi-mcp.1 WORKING_DIRECTORY "${made}"
  COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS packaging/copyright)

# Both components, which Install.cmake begins, get what Debian asks for.
set(doc "${CMAKE_INSTALL_DATAROOTDIR}/doc")
install(FILES "${made}/trovi-mcp.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
  COMPONENT trovi-mcp)
configure_file(cmake/InstallPages.cmake.in "${made}/InstallPages.cmake" @ONLY)
install(SCRIPT "${made}/InstallPages.cmake" COMPONENT trovi-mcp)
if(TARGET recorder)
  install(TARGETS recorder RUNTIME DESTINATION "${CMAKE_INSTALL_LIBEXECDIR}/trovi-mcp"
    COMPONENT trovi-mcp)
endif()
set(told "${made}/copyright" "${made}/changelog.gz" CHANGELOG.md)
install(FILES ${told} DESTINATION "${doc}/trovi-mcp" COMPONENT trovi-mcp)
install(FILES ${told} DESTINATION "${doc}/libtrovicore-dev" COMPONENT TroviCore)

# The bundle, which nobody installs by hand.
install(TARGETS trovi-mcp RUNTIME DESTINATION server COMPONENT bundle EXCLUDE_FROM_ALL)
install(FILES "${made}/manifest.json" packaging/icon.png "${made}/copyright" DESTINATION .
  COMPONENT bundle EXCLUDE_FROM_ALL)
install(DIRECTORY packaging/mcpb-resources DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)

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
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/Bundle.cmake")
set(CPACK_GENERATOR TGZ ZIP)
if(library_type STREQUAL "SHARED_LIBRARY")
  set(CPACK_TROVI_REFUSAL "packages hold the static library: configure with BUILD_SHARED_LIBS=OFF")
endif()
find_program(TROVI_SHLIBDEPS dpkg-shlibdeps)
find_program(TROVI_FILE file)
mark_as_advanced(TROVI_SHLIBDEPS TROVI_FILE)
if(TROVI_SHLIBDEPS AND TROVI_FILE)
  list(APPEND CPACK_GENERATOR DEB)
elseif(platform STREQUAL "linux")
  message(STATUS "cpack will make no .deb here: it needs Debian's packages dpkg-dev and file")
endif()
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_NAME trovi)
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
set(CPACK_DEBIAN_TROVI-MCP_DESCRIPTION "inbox of voice messages for AI assistants
A recording application transcribes spoken notes and files them. Through this
local server of the Model Context Protocol an AI assistant lists, reads,
claims, resolves and searches them. The texts are in one SQLite file on this
machine, the recordings in a folder beside it; the server opens no connection.")
set(CPACK_DEBIAN_TROVICORE_PACKAGE_NAME libtrovicore-dev)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_DEPENDS "libsqlite3-dev, libutf8proc-dev, uuid-dev")
set(CPACK_DEBIAN_TROVICORE_DESCRIPTION "C++ library for an inbox of voice messages
The inbox with its schema, messages, destinations and synchronisation, for
programs that share it with the server trovi-mcp: a static library with its
headers, a package for CMake and one for pkg-config.")
include(CPack)
