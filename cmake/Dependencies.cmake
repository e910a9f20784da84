# How the libraries that we call are linked.
#
# A release executable carries them inside: it starts in about half the time, and one file runs on
# any recent distribution. Another project's program may link them already: there it is for that
# project to say.

if(PROJECT_IS_TOP_LEVEL AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT BUILD_SHARED_LIBS)
  set(static_by_default ON)
else()
  set(static_by_default OFF)
endif()
option(TROVI_STATIC_DEPENDENCIES "Link SQLite, utf8proc, libuuid and the C++ runtime statically"
       ${static_by_default})

find_package(Threads REQUIRED)
find_package(TroviLibraries REQUIRED)
