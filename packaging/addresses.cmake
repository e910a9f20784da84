# Writes into the FOLDER of a release what depends on the addresses of its files: the Homebrew formula and the
# registry's server.json. Usage: cmake -D FOLDER=FOLDER -P addresses.cmake
include("${CMAKE_CURRENT_LIST_DIR}/owner.cmake")
if(NOT TROVI_REPOSITORY MATCHES "^https://github.com/([^/]+)/[^/]+$" OR NOT TROVI_HOMEPAGE)
  message("No formula and no server.json: packaging/owner.cmake names no homepage, or no repository on GitHub")
  return()
endif()
string(REGEX REPLACE ".*//[^/]+/([^/]+)/.*" "\\1" owner "${TROVI_REPOSITORY}")
file(READ "${CMAKE_CURRENT_LIST_DIR}/../CMakeLists.txt" project)
string(REGEX MATCH "VERSION ([0-9.]+) .*DESCRIPTION \"([^\"]*)\"" project "${project}")
set(version "${CMAKE_MATCH_1}")
set(description "${CMAKE_MATCH_2}")
set(downloads "${TROVI_REPOSITORY}/releases/download/v${version}")

file(GLOB bundles RELATIVE "${FOLDER}" "${FOLDER}/*.mcpb")
foreach(bundle IN LISTS bundles)
  file(SHA256 "${FOLDER}/${bundle}" checksum)
  list(APPEND packages "    {\"registryType\": \"mcpb\", \"transport\": {\"type\": \"stdio\"},
     \"identifier\": \"${downloads}/${bundle}\",
     \"fileSha256\": \"${checksum}\"}")
endforeach()
list(JOIN packages ",\n" packages)
configure_file("${CMAKE_CURRENT_LIST_DIR}/server.json.in" "${FOLDER}/server.json" @ONLY)

file(SHA256 "${FOLDER}/trovi-${version}.tar.gz" checksum)
configure_file("${CMAKE_CURRENT_LIST_DIR}/trovi.rb.in" "${FOLDER}/trovi.rb" @ONLY)
