# Runs a script in a folder with a copy of the catalog and checks its output.
#
# SCRIPT is the script, EMULATOR what runs the script host, CATALOG the catalog, WORK_DIR a folder of its own, EXPECTED
# the file with the expected output; without it the last line must report that all checks passed.
get_filename_component(name ${SCRIPT} NAME)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
configure_file(${CATALOG} ${WORK_DIR}/steel.xml COPYONLY)
configure_file(${SCRIPT} ${WORK_DIR}/${name} COPYONLY)
execute_process(COMMAND ${EMULATOR} cscript.exe //nologo ${name} WORKING_DIRECTORY ${WORK_DIR}
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors)
string(REPLACE "\r\n" "\n" output "${output}")
if(EXPECTED)
  file(READ ${EXPECTED} expected)
  if(NOT result EQUAL 0 OR NOT output STREQUAL expected)
    message(FATAL_ERROR "ended with ${result}\n${errors}\nprinted:\n${output}\ninstead of:\n${expected}")
  endif()
elseif(NOT result EQUAL 0 OR NOT output MATCHES "^all [1-9][0-9]* checks hold\n$")
  message(FATAL_ERROR "ended with ${result}\n${errors}\nprinted:\n${output}")
endif()
