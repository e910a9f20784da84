# Writes the Homebrew formula beside the source archive of a release, if the owner's part is known.
# Usage: cmake -D VERSION=NUMBER -D ARCHIVE=FILE -P fill.cmake
include("${CMAKE_CURRENT_LIST_DIR}/../owner.cmake")
foreach(value TROVI_HOMEPAGE TROVI_LICENSE TROVI_REPOSITORY)
  if(NOT ${value})
    message(STATUS "No Homebrew formula: ${value} is empty in packaging/owner.cmake")
    return()
  endif()
endforeach()
get_filename_component(name "${ARCHIVE}" NAME)
get_filename_component(folder "${ARCHIVE}" DIRECTORY)
file(SHA256 "${ARCHIVE}" checksum)
set(url "${TROVI_REPOSITORY}/releases/download/v${VERSION}/${name}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/trovi.rb.in" "${folder}/trovi.rb" @ONLY)
