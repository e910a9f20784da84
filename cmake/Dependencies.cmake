# The libraries that we call, as imported targets Trovi::sqlite3, Trovi::utf8proc and Trovi::uuid.
#
# A release executable carries them inside: it starts in about half the time, and one file runs on
# any recent distribution.

find_package(Threads REQUIRED)

if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT APPLE AND NOT BUILD_SHARED_LIBS)
  set(static_by_default ON)
else()
  set(static_by_default OFF)
endif()
option(TROVI_STATIC_DEPENDENCIES "Link SQLite, utf8proc, libuuid and the C++ runtime statically"
       ${static_by_default})

function(trovi_find name header)
  if(TROVI_STATIC_DEPENDENCIES)
    set(CMAKE_FIND_LIBRARY_SUFFIXES .a ${CMAKE_FIND_LIBRARY_SUFFIXES})
  endif()
  find_path(${name}_INCLUDE_DIR ${header} REQUIRED)
  find_library(${name}_LIBRARY ${name} REQUIRED)
  mark_as_advanced(${name}_INCLUDE_DIR ${name}_LIBRARY)
  add_library(Trovi::${name} UNKNOWN IMPORTED)
  set_target_properties(Trovi::${name} PROPERTIES
    IMPORTED_LOCATION "${${name}_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${${name}_INCLUDE_DIR}")
endfunction()

trovi_find(sqlite3 sqlite3.h)
target_link_libraries(Trovi::sqlite3 INTERFACE Threads::Threads ${CMAKE_DL_LIBS} m)
trovi_find(utf8proc utf8proc.h)
if(APPLE)
  add_library(Trovi::uuid INTERFACE IMPORTED)  # part of the system's own library
else()
  trovi_find(uuid uuid/uuid.h)
endif()
