# Runs the README's first program, in the folder that it expects and in one without the catalog.
#
# PROGRAM is the program, EMULATOR what runs it on another system, CATALOG the catalog, WORK_DIR a folder of its own.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR}/empty)
get_filename_component(name ${CATALOG} NAME)
configure_file(${CATALOG} ${WORK_DIR}/examples/catalogs/${name} COPYONLY)
file(SHA256 ${CATALOG} before)

execute_process(COMMAND ${EMULATOR} ${PROGRAM} WORKING_DIRECTORY ${WORK_DIR}
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT result EQUAL 0 OR NOT output MATCHES "^IPE 80: 7.643 cm2\r?\nIPE 100: 10.32 cm2\r?\n")
  message(FATAL_ERROR "ended with ${result}\n${errors}\nprinted:\n${output}")
endif()
file(READ ${WORK_DIR}/my-catalog.xml copy)
if(NOT copy MATCHES "name=\"IPE 300 welded\" h=\"300\"")
  message(FATAL_ERROR "the copy lacks the added row")
endif()
file(SHA256 ${WORK_DIR}/examples/catalogs/${name} after)
if(NOT before STREQUAL after)
  message(FATAL_ERROR "the catalog that was opened is another now")
endif()

execute_process(COMMAND ${EMULATOR} ${PROGRAM} WORKING_DIRECTORY ${WORK_DIR}/empty
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT result EQUAL 1 OR NOT output STREQUAL "" OR
   NOT errors MATCHES "Invalid source file 'examples/catalogs/european-steel.xml'")
  message(FATAL_ERROR "without the catalog it ended with ${result} and printed:\n${output}${errors}")
endif()
