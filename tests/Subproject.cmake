# A host that includes the project with add_subdirectory or FetchContent: it gets the library, without the tests,
# benchmarks and tools and the packages that they need.
# FetchContent, which leads through add_subdirectory, is also built and run.
#
# SOURCE_DIR is the project, WORK_DIR a folder of its own.
file(REMOVE_RECURSE ${WORK_DIR})
foreach(way add_subdirectory FetchContent)
  set(host ${WORK_DIR}/${way})
  if(way STREQUAL "FetchContent")
    set(taking "include(FetchContent)
FetchContent_Declare(IQuillet SOURCE_DIR ${SOURCE_DIR})
FetchContent_MakeAvailable(IQuillet)")
  else()
    set(taking "add_subdirectory(${SOURCE_DIR} iquillet)")
  endif()
  file(WRITE ${host}/CMakeLists.txt "cmake_minimum_required(VERSION 3.21)
project(Host LANGUAGES CXX)
${taking}
add_executable(host ${SOURCE_DIR}/examples/host.cpp)
target_link_libraries(host PRIVATE IQuillet::IQuillet)
foreach(target class_tests quillet catalog_bench gmock)
  if(TARGET \${target})
    message(FATAL_ERROR \"a host gets \${target}\")
  endif()
endforeach()
")
  execute_process(COMMAND ${CMAKE_COMMAND} -S ${host} -B ${host}/build -G ${GENERATOR} -DCMAKE_CXX_COMPILER=${CXX}
    -DCMAKE_BUILD_TYPE=Debug -DQUILLET_JOIN_SOURCES=ON OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${way} ended with ${result}:\n${output}")
  endif()
endforeach()

execute_process(COMMAND ${CMAKE_COMMAND} --build ${host}/build --target host
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "the host's build ended with ${result}:\n${output}")
endif()
execute_process(COMMAND ${host}/build/host ${SOURCE_DIR}/examples/catalogs/european-steel.xml ${WORK_DIR}/copy.xml
  OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT output MATCHES "IPE: 16 fields, 18 rows")
  message(FATAL_ERROR "the host ended with ${result}:\n${output}")
endif()
