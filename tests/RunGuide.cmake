# Runs the program of the guide's samples on a copy of the catalog and compares its output with the guide.
#
# PROGRAM is the program, EMULATOR what runs it on another system, CATALOG the catalog, EXPECTED the file with the
# output that the guide shows, WORK_DIR a folder of its own.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
configure_file(${CATALOG} ${WORK_DIR}/steel.xml COPYONLY)
execute_process(COMMAND ${EMULATOR} ${PROGRAM} WORKING_DIRECTORY ${WORK_DIR}
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
string(REPLACE "\r\n" "\n" output "${output}")
file(READ ${EXPECTED} expected)
if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
  message(FATAL_ERROR "ended with ${result}\n${errors}\nprinted:\n${output}\nThe guide says:\n${expected}")
endif()
if(NOT EXISTS ${WORK_DIR}/my-steel.xml)
  message(FATAL_ERROR "no catalog was saved")
endif()
file(SHA256 ${CATALOG} before)
file(SHA256 ${WORK_DIR}/steel.xml after)
if(NOT before STREQUAL after)
  message(FATAL_ERROR "the catalog that was opened is another now")
endif()
