# How the libraries that we call are linked.
#
# An executable of a release contains them: it starts sooner, and one file runs on any recent
# distribution. Within another project, whose program may link them already, that project
# decides.

if(PROJECT_IS_TOP_LEVEL AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT BUILD_SHARED_LIBS)
  set(static_by_default ON)
else()
  set(static_by_default OFF)
endif()
option(TROVI_STATIC_DEPENDENCIES "Link SQLite, utf8proc, libuuid and the C++ runtime statically"
       ${static_by_default})

find_package(Threads REQUIRED)
find_package(TroviLibraries REQUIRED)

# For the executables that packages contain.
add_library(trovi_runtime INTERFACE)
if(TROVI_STATIC_DEPENDENCIES AND NOT APPLE)
  # They run with an older C library, 2.34: a static libgcc would ask for 2.35.
  target_link_options(trovi_runtime INTERFACE -static-libstdc++ -Wl,--gc-sections)
endif()
