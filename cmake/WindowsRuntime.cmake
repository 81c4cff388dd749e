# The run-time libraries of the compiler, beside the programs and installed with them. Library and host share them:
# exceptions pass between the two, and with separate run-times neither could free the other's memory for them.
set(QUILLET_RUNTIME_DLLS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
foreach(name IN LISTS QUILLET_RUNTIME_DLLS)
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE source OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(copy ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name})
  if(${source} IS_NEWER_THAN ${copy})
    file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
    execute_process(COMMAND ${CMAKE_STRIP} -o ${copy} ${source} COMMAND_ERROR_IS_FATAL ANY)
  endif()
  install(FILES ${copy} DESTINATION ${CMAKE_INSTALL_BINDIR})
endforeach()
