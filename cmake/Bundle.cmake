# Run by cpack after each kind of package. The bundle is zipped once more by the names of its files
# alone: unpackers of bundles stumble over the entry of a folder.
if(CPACK_GENERATOR STREQUAL "ZIP")
  set(folder "${CPACK_TEMPORARY_DIRECTORY}/bundle")
  file(GLOB_RECURSE files RELATIVE "${folder}" "${folder}/*")
  file(REMOVE ${CPACK_PACKAGE_FILES})
  execute_process(COMMAND "${CMAKE_COMMAND}" -E tar cf ${CPACK_PACKAGE_FILES} --format=zip ${files}
    WORKING_DIRECTORY "${folder}" COMMAND_ERROR_IS_FATAL ANY)
endif()
