# How our own code is compiled. Nothing here reaches a consumer of the library.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

set(TROVI_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread, and fuzzer-no-link")
option(TROVI_WERROR "Treat warnings as errors" OFF)

add_library(trovi_settings INTERFACE)
target_compile_options(trovi_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(TROVI_WERROR)
  target_compile_options(trovi_settings INTERFACE -Werror)
endif()
if(TROVI_SANITIZE)
  set(sanitizers -fsanitize=${TROVI_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(trovi_settings INTERFACE ${sanitizers})
  target_link_options(trovi_settings INTERFACE ${sanitizers})
endif()
