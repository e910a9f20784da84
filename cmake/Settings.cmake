# How our own code is compiled. Nothing here reaches a consumer of the library.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
  endif()
endif()

set(TROVI_SANITIZE "" CACHE STRING "Sanitizers to build with: address,undefined or thread, and fuzzer-no-link")
option(TROVI_WERROR "Treat warnings as errors" OFF)

add_library(trovi_settings INTERFACE)
target_compile_options(trovi_settings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(trovi_settings INTERFACE -Wno-restrict)  # warns wrongly of "x" + std::string, GCC bug 105651
endif()
if(TROVI_WERROR)
  target_compile_options(trovi_settings INTERFACE -Werror)
endif()
if(TROVI_SANITIZE)
  set(sanitizers -fsanitize=${TROVI_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(trovi_settings INTERFACE ${sanitizers})
  target_link_options(trovi_settings INTERFACE ${sanitizers})
endif()

# What distributions add so that a fault is harder to exploit. It takes an optimised build.
option(TROVI_HARDEN "Compile and link with the usual protections, unless for debugging"
       ${PROJECT_IS_TOP_LEVEL})
if(TROVI_HARDEN AND NOT TROVI_SANITIZE)
  include(CheckCXXSourceCompiles)
  include(CheckLinkerFlag)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)

  # Each set of flags that the compiler knows and does not warn of. Of the first two the last one counts.
  foreach(flags "-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2" "-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3"
      -fstack-protector-strong -fstack-clash-protection
      -fcf-protection=full -mbranch-protection=standard)
    string(MAKE_C_IDENTIFIER "TROVI_HAS${flags}" known)
    set(CMAKE_REQUIRED_FLAGS "-O2 -Werror ${flags}")
    check_cxx_source_compiles("#include <cstring>\nint main() {}" ${known})
    unset(CMAKE_REQUIRED_FLAGS)
    if(${known})
      target_compile_options(trovi_settings INTERFACE "$<$<NOT:$<CONFIG:Debug>>:SHELL:${flags}>")
    endif()
  endforeach()
  check_linker_flag(CXX -Wl,-z,relro,-z,now TROVI_HAS_RELRO)
  if(TROVI_HAS_RELRO)
    add_link_options(-Wl,-z,relro,-z,now)  # of our folders: an interface would reach a consumer
  endif()
endif()
