# What packages contain beside the programs and the library, and the packages, which Scripts/package makes
# in packages/ of the build tree:
#   trovi-mcp-*.tar.gz                        target archives: both executables, to be unpacked anywhere
#   trovi-*.mcpb                              target archives: the bundle that desktop assistants install
#   trovi-mcp_*.deb, libtrovicore-dev_*.deb   cpack

include(packaging/owner.cmake)
string(TOLOWER "${CMAKE_SYSTEM_NAME}" system)
set(TROVI_PROCESSOR "${CMAKE_SYSTEM_PROCESSOR}" CACHE STRING "Processor that the archives name")
set(generated "${PROJECT_BINARY_DIR}/packaging")

# Our licence, and those of the libraries inside the executables, from Debian's packages or Homebrew.
file(READ LICENSE copyright)
if(TROVI_STATIC_DEPENDENCIES)
  string(APPEND copyright "\nThe executables contain utf8proc. Those for Linux also contain SQLite, libuuid "
    "and GCC's libstdc++.\nTheir copyright and licences follow, as the packages that they come from state "
    "them.\n")
  file(REAL_PATH "${Trovi_utf8proc_LIBRARY}" library)
  string(REGEX REPLACE "/lib/[^/]*$" "" homebrew "${library}")
  file(GLOB licences "${homebrew}/LICENSE*" /usr/share/doc/libsqlite3-dev/copyright
    /usr/share/doc/libstdc++6/copyright /usr/share/doc/libutf8proc-dev/copyright
    /usr/share/doc/uuid-dev/copyright)
  foreach(file IN LISTS licences)
    file(READ "${file}" licence)
    string(APPEND copyright "\n\n---- ${file} ----\n\n${licence}")
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
configure_file(packaging/trovi.1.in "${generated}/trovi.1" @ONLY)
execute_process(COMMAND gzip -9nf changelog trovi-mcp.1 trovi.1 WORKING_DIRECTORY "${generated}"
  COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS LICENSE)

# Both components, which Install.cmake begins, get what Debian asks for.
set(document_folder "${CMAKE_INSTALL_DATAROOTDIR}/doc")
trovi_install_folders(TroviCore "${document_folder}/libtrovicore-dev")
trovi_install_folders(trovi-mcp "${document_folder}/trovi-mcp/docs" "${CMAKE_INSTALL_MANDIR}/man1")
set(documents "${generated}/copyright" "${generated}/changelog.gz" CHANGELOG.md)
install(FILES ${documents} DESTINATION "${document_folder}/trovi-mcp" COMPONENT trovi-mcp)
install(FILES docs/manutencao.md docs/upkeep.md DESTINATION "${document_folder}/trovi-mcp/docs"
  COMPONENT trovi-mcp)
install(FILES ${documents} DESTINATION "${document_folder}/libtrovicore-dev" COMPONENT TroviCore)
install(FILES "${generated}/trovi-mcp.1.gz" "${generated}/trovi.1.gz"
  DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT trovi-mcp)
configure_file(cmake/InstallPages.cmake.in "${generated}/InstallPages.cmake" @ONLY)
install(SCRIPT "${generated}/InstallPages.cmake" COMPONENT trovi-mcp)

# The bundle, which nobody installs by hand.
install(TARGETS trovi-mcp RUNTIME DESTINATION server COMPONENT bundle EXCLUDE_FROM_ALL)
install(FILES "${generated}/manifest.json" packaging/icon.png "${generated}/copyright" DESTINATION .
  COMPONENT bundle EXCLUDE_FROM_ALL)
install(DIRECTORY "${generated}/mcpb-resources" DESTINATION . COMPONENT bundle EXCLUDE_FROM_ALL)

# macOS runs only signed executables, and strip and lipo remove the linker's signature.
if(APPLE)
  install(CODE "
    file(GLOB executables \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/trovi-mcp\"
      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin/trovi\"
      \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/server/trovi-mcp\")
    if(executables)
      execute_process(COMMAND codesign --force --sign - \${executables} COMMAND_ERROR_IS_FATAL ANY)
    endif()"
    ALL_COMPONENTS)
endif()

# The archives name their files: these have an order, and there are no entries for folders, on which programs
# that unpack bundles fail. Zip's format stores local times.
set(packages "${PROJECT_BINARY_DIR}/packages")
set(machine "${PROJECT_VERSION}-${system}-${TROVI_PROCESSOR}")
set(TROVI_BUNDLE  # read by Tests/Clients too
  "${packages}/trovi-${machine}.mcpb")
set(archived bin/trovi bin/trovi-mcp ${CMAKE_INSTALL_MANDIR}/man1/trovi.1.gz
  ${CMAKE_INSTALL_MANDIR}/man1/trovi-mcp.1.gz)
foreach(document changelog.gz CHANGELOG.md copyright docs/manutencao.md docs/upkeep.md LEIAME.md README.md)
  list(APPEND archived ${document_folder}/trovi-mcp/${document})
endforeach()
list(TRANSFORM archived PREPEND "trovi-mcp-${machine}/")
set(install "${CMAKE_COMMAND}" --install "${PROJECT_BINARY_DIR}" --strip --component)
set(tar "${CMAKE_COMMAND}" -E env TZ=UTC "${CMAKE_COMMAND}" -E tar)
add_custom_target(archives
  COMMAND "${CMAKE_COMMAND}" -E make_directory "${packages}"
  COMMAND ${install} bundle --prefix "${generated}/bundle"
  COMMAND "${CMAKE_COMMAND}" -E chdir "${generated}/bundle" ${tar} cf "${TROVI_BUNDLE}" --format=zip
    manifest.json icon.png copyright mcpb-resources/en-US.json server/trovi-mcp
  COMMAND ${install} trovi-mcp --prefix "${generated}/archive/trovi-mcp-${machine}"
  COMMAND "${CMAKE_COMMAND}" -E chdir "${generated}/archive" ${tar} czf
    "${packages}/trovi-mcp-${machine}.tar.gz" --format=gnutar ${archived}
  VERBATIM)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY "${packages}")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_NAME trovi)
set(CPACK_PACKAGE_CONTACT "${TROVI_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_COMPONENTS_ALL trovi-mcp TroviCore)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_NAME trovi-mcp)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TROVI-MCP_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_TROVI-MCP_DESCRIPTION "${PROJECT_DESCRIPTION}
A recording application transcribes spoken notes and files them. Through this
local server of the Model Context Protocol an AI assistant lists, reads,
claims, resolves and searches them. With the command trovi a person needs no
such application. The texts are in one SQLite file on this machine, the
recordings in a folder beside it; neither program opens a connection.")
set(CPACK_DEBIAN_TROVICORE_PACKAGE_NAME libtrovicore-dev)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_TROVICORE_PACKAGE_DEPENDS "libsqlite3-dev, libutf8proc-dev, uuid-dev")
set(CPACK_DEBIAN_TROVICORE_DESCRIPTION "C++ library for the inbox of your voice notes
The inbox with its schema, messages, destinations and synchronisation, for
programs that share it with the server trovi-mcp: a static library with its
headers, a package for CMake and one for pkg-config.")
include(CPack)
