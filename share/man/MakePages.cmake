# cmake -DGENERATOR=wqf_pages -DSCDOC=scdoc -DSOURCES=folder -DOUT=folder -P MakePages.cmake
# Fills OUT with manual pages and completions, and with the package's list of changes; packed as packages have them.
file(REMOVE_RECURSE "${OUT}")
execute_process(COMMAND "${GENERATOR}" "${SOURCES}" "${OUT}/completions" COMMAND_ERROR_IS_FATAL ANY)

# The generator writes the first section; the others stand in the sources as they are.
file(GLOB pages "${OUT}/completions/*.1.scd" "${SOURCES}/*.7.scd")
foreach(page IN LISTS pages)
  get_filename_component(name "${page}" NAME)
  string(REGEX REPLACE "^(.*)\\.([17])\\.scd$" "${OUT}/man/man\\2/\\1.\\2" manual "${name}")
  get_filename_component(section "${manual}" DIRECTORY)
  file(MAKE_DIRECTORY "${section}")
  execute_process(COMMAND "${SCDOC}" INPUT_FILE "${page}" OUTPUT_FILE "${manual}" COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND gzip -9n "${manual}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
file(GLOB sources "${OUT}/completions/*.scd")
file(REMOVE ${sources})

execute_process(COMMAND gzip -9nc "${SOURCES}/../debian/changelog" OUTPUT_FILE "${OUT}/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)
