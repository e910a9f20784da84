# Run by cpack after it has made each kind of package. The bundle is zipped again without entries for
# folders: programs that unpack bundles fail on those.
if(CPACK_GENERATOR STREQUAL "ZIP")
  set(folder "${CPACK_TEMPORARY_DIRECTORY}/bundle")
  file(GLOB_RECURSE files RELATIVE "${folder}" "${folder}/*")
  file(REMOVE ${CPACK_PACKAGE_FILES})
  execute_process(COMMAND "${CMAKE_COMMAND}" -E tar cf ${CPACK_PACKAGE_FILES} --format=zip ${files}
    WORKING_DIRECTORY "${folder}" COMMAND_ERROR_IS_FATAL ANY)
endif()
