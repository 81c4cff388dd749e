# What the shared library exports: classes, statics and functions of its own, without what the compiler may leave out or put
# into every library (weak symbols). NM lists those of LIBRARY, EXPECTED holds their names, one on a line; WORK_DIR gets the
# list of now.
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
# Semicolons and brackets mean something to lists.
string(REPLACE ";" ":" symbols "${symbols}")
string(REPLACE "[" "<" symbols "${symbols}")
string(REPLACE "]" ">" symbols "${symbols}")
string(REGEX MATCHALL "[0-9a-f]+ [TDBRV] [^\n]+" lines "${symbols}")
list(TRANSFORM lines REPLACE "^[0-9a-f]+ [TDBRV] " "")
# Constructors and destructors have several symbols of one name.
list(REMOVE_DUPLICATES lines)
list(SORT lines)
list(JOIN lines "\n" text)
file(WRITE ${WORK_DIR}/exports.txt "${text}\n")
execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${EXPECTED} ${WORK_DIR}/exports.txt RESULT_VARIABLE differs
  OUTPUT_QUIET ERROR_QUIET)
if(differs)
  execute_process(COMMAND diff ${EXPECTED} ${WORK_DIR}/exports.txt OUTPUT_VARIABLE difference)
  message(FATAL_ERROR "The exports are others than those in ${EXPECTED}:\n${difference}")
endif()
