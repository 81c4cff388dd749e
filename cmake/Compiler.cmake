# quillet_join_sources(target): compiles its files of one folder as one, if that option is on. Names that are local to a
# file must differ within a folder; each file must still be self-contained, since other builds compile it alone.
function(quillet_join_sources target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${QUILLET_JOIN_SOURCES} UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source ${sources})
    get_filename_component(folder ${source} DIRECTORY)
    string(MAKE_C_IDENTIFIER "joined_${folder}" group)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group})
  endforeach()
  if(QUILLET_JOIN_SOURCES AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Anonymous namespaces look as if they were in a header.
    target_compile_options(${target} PRIVATE -Wno-subobject-linkage)
  endif()
endfunction()

# The options of every target of the project.
add_library(quillet_options INTERFACE)
target_compile_features(quillet_options INTERFACE cxx_std_20)
target_compile_options(quillet_options INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wsign-conversion;-Wshadow>
  $<$<CXX_COMPILER_ID:MSVC>:/W4;/utf-8;/permissive->)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # This version warns of overlaps in its own string library where there are none.
  target_compile_options(quillet_options INTERFACE -Wno-restrict)
endif()
if(QUILLET_WARNINGS_AS_ERRORS)
  target_compile_options(quillet_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU,Clang>:-Werror>
    $<$<CXX_COMPILER_ID:MSVC>:/WX>)
endif()
if(QUILLET_SANITIZE)
  target_compile_options(quillet_options INTERFACE
    -fsanitize=${QUILLET_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quillet_options INTERFACE -fsanitize=${QUILLET_SANITIZE})
endif()
if(WIN32)
  # Windows 10 or later; wide characters everywhere; no macros named min and max.
  target_compile_definitions(quillet_options INTERFACE _WIN32_WINNT=0x0A00 UNICODE _UNICODE NOMINMAX)
endif()
