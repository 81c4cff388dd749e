# Compiles a host's include with an older standard. It must fail with one line that says why.
#
# CXX is the compiler, INCLUDE_DIR where hosts find the headers, WORK_DIR a folder of its own.
set(why "IQuillet needs C\\+\\+20: compile with -std=c\\+\\+20")
file(MAKE_DIRECTORY ${WORK_DIR})
file(WRITE ${WORK_DIR}/host.cpp "#include <Quillet/IQuillet.h>\n")

function(compile standard)
  execute_process(COMMAND ${CXX} -std=${standard} -fsyntax-only -I ${INCLUDE_DIR} ${WORK_DIR}/host.cpp
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(result ${result} PARENT_SCOPE)
  set(output "${output}" PARENT_SCOPE)
endfunction()

foreach(standard c++11 c++14 c++17)
  compile(${standard})
  string(REGEX MATCHALL "error:[^\n]*" errors "${output}")
  list(LENGTH errors count)
  if(result EQUAL 0 OR NOT count EQUAL 1 OR NOT errors MATCHES "${why}")
    message(FATAL_ERROR "-std=${standard} ended with ${result}:\n${output}")
  endif()
endforeach()
compile(c++20)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "-std=c++20 ended with ${result}:\n${output}")
endif()
