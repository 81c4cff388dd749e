# The installation for hosts: the library, its headers, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS IQuillet EXPORT IQuilletTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
if(QUILLET_BUILD_TOOLS AND TARGET quillet)
  install(TARGETS quillet RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

if(WIN32)
  set(QUILLET_OTHER_PORT posix)
  set(QUILLET_SYSTEM_LIBRARIES "-loleaut32 -lole32 -luuid")
else()
  set(QUILLET_OTHER_PORT windows)
endif()

# The headers that IQuillet.h includes, directly or not; internal headers are not installed.
file(STRINGS cmake/public-headers.txt QUILLET_PUBLIC_HEADERS)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/public-headers.txt)
list(FILTER QUILLET_PUBLIC_HEADERS EXCLUDE REGEX ^Quillet/platform/${QUILLET_OTHER_PORT}/)
foreach(header IN LISTS QUILLET_PUBLIC_HEADERS)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES Db/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/IQuillet/${folder})
endforeach()

set(QUILLET_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/IQuillet)
install(EXPORT IQuilletTargets NAMESPACE IQuillet:: DESTINATION ${QUILLET_PACKAGE_DIR})
configure_package_config_file(cmake/IQuilletConfig.cmake.in ${PROJECT_BINARY_DIR}/IQuilletConfig.cmake
  INSTALL_DESTINATION ${QUILLET_PACKAGE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/IQuilletConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
file(RELATIVE_PATH QUILLET_PREFIX_FROM_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/iquillet.pc.in ${PROJECT_BINARY_DIR}/iquillet.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/IQuilletConfig.cmake ${PROJECT_BINARY_DIR}/IQuilletConfigVersion.cmake
  DESTINATION ${QUILLET_PACKAGE_DIR})
install(FILES ${PROJECT_BINARY_DIR}/iquillet.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
