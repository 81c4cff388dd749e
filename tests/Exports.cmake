# The exports of the shared library: its own classes, statics and functions, without those that the compiler may leave
# out or put into every library (weak symbols). NM lists those of LIBRARY, EXPECTED holds their names, one on each line;
# the current list is written to WORK_DIR.
execute_process(COMMAND ${NM} -D -C --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
# Semicolons and brackets are special in CMake lists.
string(REPLACE ";" ":" symbols "${symbols}")
string(REPLACE "[" "<" symbols "${symbols}")
string(REPLACE "]" ">" symbols "${symbols}")
string(REGEX MATCHALL "[0-9a-f]+ [TDBRV] [^\n]+" lines "${symbols}")
list(TRANSFORM lines REPLACE "^[0-9a-f]+ [TDBRV] " "")
# Constructors and destructors have several symbols with the same name.
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
