# Generated from the type library's source: header, identifiers, proxies and stubs, and the type library itself. They
# become part of IQuillet.dll; clients link quillet_automation, which has the header and the identifiers.
enable_language(C)
enable_language(RC)

find_program(QUILLET_WIDL widl PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(QUILLET_IDL_SOURCES oaidl.idl PATHS /usr/include/wine/wine/windows /usr/include/wine/windows
  NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(QUILLET_STDOLE stdole2.tlb PATHS /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/wine/x86_64-windows
  NO_CMAKE_FIND_ROOT_PATH REQUIRED)

set(QUILLET_IDL ${PROJECT_SOURCE_DIR}/Db/Quillet/automation/IQuillet.idl)
set(QUILLET_MADE_ROOT ${PROJECT_BINARY_DIR}/made)
set(QUILLET_MADE ${QUILLET_MADE_ROOT}/Quillet/automation)
file(MAKE_DIRECTORY ${QUILLET_MADE})
# The generated files name their source and are installed, so paths of the build machine are left out.
file(RELATIVE_PATH QUILLET_IDL_FROM_MADE ${QUILLET_MADE} ${QUILLET_IDL})
add_custom_command(
  OUTPUT ${QUILLET_MADE}/IQuillet.h ${QUILLET_MADE}/IQuillet_i.c ${QUILLET_MADE}/IQuillet_p.c
    ${QUILLET_MADE}/IQuillet.tlb ${QUILLET_MADE}/dlldata.c
  COMMAND ${QUILLET_WIDL} -b x86_64-w64-mingw32 -Oif --nostdinc -I${QUILLET_IDL_SOURCES} -L${QUILLET_STDOLE}
    -h -u -p -t ${QUILLET_IDL_FROM_MADE}
  COMMAND ${QUILLET_WIDL} -b x86_64-w64-mingw32 --dlldata-only -o dlldata.c IQuillet
  DEPENDS ${QUILLET_IDL}
  WORKING_DIRECTORY ${QUILLET_MADE}
  VERBATIM)

add_library(quillet_automation STATIC ${QUILLET_MADE}/IQuillet_i.c ${QUILLET_MADE}/IQuillet.h)
target_include_directories(quillet_automation PUBLIC ${QUILLET_MADE_ROOT})

set(sources ${PROJECT_SOURCE_DIR}/Db/Quillet/automation)
target_sources(IQuillet PRIVATE
  ${sources}/IQuillet.def
  ${sources}/IQuillet.rc
  ${sources}/CDbDatabase.cpp
  ${sources}/CDbFieldDescr.cpp
  ${sources}/CDbFieldValue.cpp
  ${sources}/CDbSource.cpp
  ${sources}/CDbTableData.cpp
  ${sources}/CDbTableDescr.cpp
  ${sources}/CDbTableInfo.cpp
  ${sources}/CDbTableRow.cpp
  ${sources}/CIQuilletApp.cpp
  ${sources}/ClassObject.cpp
  ${sources}/Dispatch.cpp
  ${sources}/EntryPoints.cpp
  ${sources}/MethodFailure.cpp
  ${sources}/FirstRow.cpp
  ${sources}/InvokeArguments.cpp
  ${sources}/LibraryApp.cpp
  ${sources}/Module.cpp
  ${sources}/Registration.cpp
  ${sources}/RegistryKey.cpp
  ${sources}/RegistryPlace.cpp
  ${sources}/TableKey.cpp
  ${sources}/TypeInformation.cpp
  ${sources}/Proxies.c
  ${QUILLET_MADE}/dlldata.c)
set_source_files_properties(${sources}/IQuillet.rc PROPERTIES
  OBJECT_DEPENDS ${QUILLET_MADE}/IQuillet.tlb COMPILE_OPTIONS -I${QUILLET_MADE})
# The output of widl is compiled without our warnings. Its entry points are called Proxy..., because ours have the
# standard names.
set_source_files_properties(${sources}/Proxies.c PROPERTIES
  OBJECT_DEPENDS ${QUILLET_MADE}/IQuillet_p.c COMPILE_OPTIONS "-w;-DUSE_COMPILER_EXCEPTIONS")
set_source_files_properties(${QUILLET_MADE}/dlldata.c PROPERTIES
  COMPILE_OPTIONS "-w;-DENTRY_PREFIX=Proxy;-DREGISTER_PROXY_DLL;-DPROXY_DELEGATION")
target_link_libraries(IQuillet PRIVATE quillet_automation rpcrt4)
target_compile_definitions(IQuillet PRIVATE QUILLET_BUILDING)

install(FILES ${QUILLET_MADE}/IQuillet.h ${QUILLET_MADE}/IQuillet_i.c ${QUILLET_MADE}/IQuillet.tlb
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/IQuillet/Quillet/automation)
