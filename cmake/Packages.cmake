# What users get, made by `cpack` into packages/ of the build tree:
#   trovi-mcp_*.deb, libtrovicore-dev_*.deb   where dpkg's tools are there to make them
#   trovi-mcp-*.tar.gz                        the same server, to be unpacked anywhere
#   trovi-*.mcpb                              the bundle that desktop assistants install

set(TROVI_MAINTAINER "Trovi maintainers <maintainers@trovi.invalid>" CACHE STRING
  "Whom the packages name as their maintainer")
string(TOLOWER "${CMAKE_SYSTEM_NAME}" platform)
set(made "${PROJECT_BINARY_DIR}/packaging")
file(MAKE_DIRECTORY "${made}")

# The licences of the libraries inside the executable, as the packages they come from tell them.
file(READ packaging/copyright copyright)
if(TROVI_STATIC_DEPENDENCIES)
  foreach(package libsqlite3-dev libutf8proc-dev uuid-dev libstdc++6)
    if(EXISTS "/usr/share/doc/${package}/copyright")
      file(READ "/usr/share/doc/${package}/copyright" licence)
      string(APPEND copyright "\n\n---- ${package} ----\n\n${licence}")
    endif()
  endforeach()
endif()
file(WRITE "${made}/copyright" "${copyright}")

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)  # of SOURCE_DATE_EPOCH, if that is set
configure_file(packaging/changelog.in "${made}/changelog" @ONLY)
configure_file(packaging/manifest.json.in "${made}/manifest.json" @ONLY)
configure_file(packaging/trovi-mcp.1.in "${made}/trovi-mcp.1" @ONLY)
execute_process(COMMAND gzip -9nf changelog trovi-mcp.1 WORKING_DIRECTORY "${made}"
  COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS packaging/copyright)

# What Install.cmake puts into the two components, with what Debian wants.
set(doc "${CMAKE_INSTALL_DATAROOTDIR}/doc")
install(FILES "${made}/trovi-mcp.1.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
  COMPONENT trovi-mcp)
install(FILES README.md LEIAME.md DESTINATION "${doc}/trovi-mcp" COMPONENT trovi-mcp OPTIONAL)
set(told "${made}/copyright" "${made}/changelog.gz" CHANGELOG.md)
install(FILES ${told} DESTINATION "${doc}/trovi-mcp" COMPONENT trovi-mcp)
install(FILES ${told} DESTINATION "${doc}/libtrovicore-dev" COMPONENT TroviCore)

# The bundle, which nobody installs by hand.
install(TARGETS trovi-mcp RUNTIME DESTINATION server COMPONENT bundle EXCLUDE_FROM_ALL)
install(FILES "${made}/manifest.json" packaging/icon.png "${made}/copyright" DESTINATION .
  COMPONENT bundle EXCLUDE_FROM_ALL)

set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/PackageKinds.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/Bundle.cmake")
set(CPACK_GENERATOR TGZ ZIP)
find_program(TROVI_SHLIBDEPS dpkg-shlibdeps)
mark_as_advanced(TROVI_SHLIBDEPS)
if(TROVI_SHLIBDEPS)
  list(APPEND CPACK_GENERATOR DEB)
endif()
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGE_NAME trovi)
set(CPACK_PACKAGE_FILE_NAME
  "trovi-mcp-${PROJECT_VERSION}-${platform}-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_PACKAGE_CONTACT "${TROVI_MAINTAINER}")
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_NAME trovi-mcp)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TROVI-MCP_DESCRIPTION "inbox of voice messages for AI assistants
Spoken notes are transcribed and filed by a recording application. Through
this local server of the Model Context Protocol an AI assistant lists, reads,
claims and resolves them. Everything stays on the machine, in one SQLite file.")
set(CPACK_DEBIAN_TROVICORE_PACKAGE_NAME libtrovicore-dev)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_DEPENDS "libsqlite3-dev, libutf8proc-dev, uuid-dev")
set(CPACK_DEBIAN_TROVICORE_DESCRIPTION "C++ library for an inbox of voice messages
The inbox with its schema, messages, destinations and synchronisation, for
programs that share it with the server trovi-mcp: a static library with its
headers, a package for CMake and one for pkg-config.")
include(CPack)
