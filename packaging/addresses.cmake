# Writes into the FOLDER of a release what depends on the addresses of its files: the Homebrew formula and the
# registry's server.json, as far as packaging/owner.cmake says where that is.
# Usage: cmake -D FOLDER=FOLDER -P addresses.cmake
include("${CMAKE_CURRENT_LIST_DIR}/owner.cmake")
file(READ "${CMAKE_CURRENT_LIST_DIR}/../CMakeLists.txt" project)
string(REGEX MATCH "VERSION ([0-9.]+) .*DESCRIPTION \"([^\"]*)\"" project "${project}")
set(version "${CMAKE_MATCH_1}")
set(description "${CMAKE_MATCH_2}")
set(downloads "${TROVI_REPOSITORY}/releases/download/v${version}")

if(TROVI_HOMEPAGE AND TROVI_REPOSITORY)
  file(SHA256 "${FOLDER}/trovi-${version}.tar.gz" checksum)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/trovi.rb.in" "${FOLDER}/trovi.rb" @ONLY)
else()
  message("No Homebrew formula: packaging/owner.cmake lacks the homepage or the repository.")
endif()

if(TROVI_REPOSITORY MATCHES "^https://github.com/([^/]+)/[^/]+$")
  set(owner "${CMAKE_MATCH_1}")
  file(GLOB bundles "${FOLDER}/*.mcpb")
  foreach(bundle IN LISTS bundles)
    get_filename_component(name "${bundle}" NAME)
    file(SHA256 "${bundle}" checksum)
    string(APPEND packages "${comma}
    {
      \"registryType\": \"mcpb\",
      \"identifier\": \"${downloads}/${name}\",
      \"fileSha256\": \"${checksum}\",
      \"transport\": {\"type\": \"stdio\"}
    }")
    set(comma ",")
  endforeach()
  configure_file("${CMAKE_CURRENT_LIST_DIR}/server.json.in" "${FOLDER}/server.json" @ONLY)
else()
  message("No server.json: packaging/owner.cmake names no repository on GitHub.")
endif()
