# Installs the library, builds the example host against the package and runs it; then compiles it once more with what
# pkg-config says.
#
# BUILD_DIR is the build to install, SOURCE_DIR the project, WORK_DIR a folder of its own. For another system than this
# one TOOLCHAIN builds the programs, EMULATOR runs them, and SUFFIX ends their names.
function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGV}\nended with ${result}:\n${output}")
  endif()
  set(run_output "${output}" PARENT_SCOPE)
endfunction()

set(stage ${WORK_DIR}/stage)
set(catalog ${SOURCE_DIR}/examples/catalogs/european-steel.xml)
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${stage})
if(TOOLCHAIN)
  # A toolchain looks into its own folders only.
  file(GLOB_RECURSE package ${stage}/*/IQuilletConfig.cmake)
  get_filename_component(package ${package} DIRECTORY)
  set(system -DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN} -DIQuillet_DIR=${package})
else()
  set(system -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${stage})
endif()
run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/build -G ${GENERATOR} ${system})
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${EMULATOR} ${WORK_DIR}/build/host${SUFFIX} ${catalog} ${WORK_DIR}/copy.xml)
if(NOT run_output MATCHES "IPE: 16 fields, 18 rows" OR NOT run_output MATCHES "now 19 rows")
  message(FATAL_ERROR "The host printed:\n${run_output}")
endif()
file(READ ${WORK_DIR}/copy.xml copy)
if(NOT copy MATCHES "name=\"IPE 300 welded\" h=\"300\"")
  message(FATAL_ERROR "The copy lacks the added row")
endif()

file(GLOB_RECURSE package ${stage}/*/iquillet.pc)
get_filename_component(package ${package} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${package})
run(pkg-config --cflags iquillet)
separate_arguments(cflags UNIX_COMMAND "${run_output}")
run(pkg-config --libs iquillet)
separate_arguments(libs UNIX_COMMAND "${run_output}")
run(${CXX} -std=c++20 ${cflags} ${SOURCE_DIR}/examples/host.cpp -o ${WORK_DIR}/host${SUFFIX} ${libs})
