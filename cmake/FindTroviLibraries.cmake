# The libraries that the core calls, as imported targets Trovi::sqlite3, Trovi::utf8proc and
# Trovi::uuid. Installed with the package: whoever links the static library links these too.

include(FindPackageHandleStandardArgs)
find_package(Threads QUIET)

function(trovi_find name header)
  if(TROVI_STATIC_DEPENDENCIES)
    set(CMAKE_FIND_LIBRARY_SUFFIXES .a ${CMAKE_FIND_LIBRARY_SUFFIXES})
  endif()
  find_path(Trovi_${name}_INCLUDE_DIR ${header})
  find_library(Trovi_${name}_LIBRARY ${name})
  mark_as_advanced(Trovi_${name}_INCLUDE_DIR Trovi_${name}_LIBRARY)
  if(NOT TARGET Trovi::${name})
    add_library(Trovi::${name} UNKNOWN IMPORTED)
    set_target_properties(Trovi::${name} PROPERTIES
      IMPORTED_LOCATION "${Trovi_${name}_LIBRARY}"
      INTERFACE_INCLUDE_DIRECTORIES "${Trovi_${name}_INCLUDE_DIR}")
  endif()
endfunction()

trovi_find(sqlite3 sqlite3.h)
set_target_properties(Trovi::sqlite3 PROPERTIES
  INTERFACE_LINK_LIBRARIES "Threads::Threads;${CMAKE_DL_LIBS};m")
trovi_find(utf8proc utf8proc.h)
set(_trovi_required Trovi_sqlite3_LIBRARY Trovi_sqlite3_INCLUDE_DIR
  Trovi_utf8proc_LIBRARY Trovi_utf8proc_INCLUDE_DIR Threads_FOUND)
if(NOT APPLE)
  trovi_find(uuid uuid/uuid.h)
  list(APPEND _trovi_required Trovi_uuid_LIBRARY Trovi_uuid_INCLUDE_DIR)
elseif(NOT TARGET Trovi::uuid)
  add_library(Trovi::uuid INTERFACE IMPORTED)  # part of the system's own library
endif()
find_package_handle_standard_args(TroviLibraries REQUIRED_VARS ${_trovi_required})
unset(_trovi_required)
