# The contract lives in engine/Tessaly.idl alone; the header, type library, interface
# identifiers and proxy/stub code are generated from it at build time.
set(TESSALY_GENERATED_DIR ${CMAKE_BINARY_DIR}/generated)
set(TESSALY_IDL ${CMAKE_SOURCE_DIR}/engine/Tessaly.idl)
set(TESSALY_TLB ${TESSALY_GENERATED_DIR}/Tessaly.tlb)
# stdole2.tlb, which the IDL imports, comes with 64-bit Wine, installed on every machine; a type
# library records only the imported library's identity, so one copy serves both targets.
set(_widl ${TESSALY_WIDL} ${TESSALY_WIDL_TARGET} -I/usr/include/wine/wine/windows
  -L/usr/lib/x86_64-linux-gnu/wine/x86_64-windows)
file(MAKE_DIRECTORY ${TESSALY_GENERATED_DIR})

add_custom_command(
  OUTPUT ${TESSALY_GENERATED_DIR}/Tessaly.h ${TESSALY_TLB} ${TESSALY_GENERATED_DIR}/Tessaly_i.c
         ${TESSALY_GENERATED_DIR}/Tessaly_p.c ${TESSALY_GENERATED_DIR}/dlldata.c
  COMMAND ${_widl} -h -o ${TESSALY_GENERATED_DIR}/Tessaly.h ${TESSALY_IDL}
  COMMAND ${_widl} -t -o ${TESSALY_TLB} ${TESSALY_IDL}
  COMMAND ${_widl} -u -o ${TESSALY_GENERATED_DIR}/Tessaly_i.c ${TESSALY_IDL}
  COMMAND ${_widl} -p -o ${TESSALY_GENERATED_DIR}/Tessaly_p.c ${TESSALY_IDL}
  COMMAND ${_widl} --dlldata-only --dlldata=${TESSALY_GENERATED_DIR}/dlldata.c Tessaly
  DEPENDS ${TESSALY_IDL}
  COMMENT "Generating the contract from Tessaly.idl"
  VERBATIM)
add_custom_target(tessaly_contract_files DEPENDS ${TESSALY_TLB})

# Header and interface identifiers, for the engine and for hosts (the tests are hosts too).
add_library(tessaly_contract STATIC ${TESSALY_GENERATED_DIR}/Tessaly_i.c)
target_include_directories(tessaly_contract SYSTEM PUBLIC ${TESSALY_GENERATED_DIR})
target_include_directories(tessaly_contract PUBLIC ${CMAKE_SOURCE_DIR})
add_dependencies(tessaly_contract tessaly_contract_files)

# The proxy/stub for the seven interfaces, linked into the server library.
add_library(tessaly_proxy OBJECT ${TESSALY_GENERATED_DIR}/Tessaly_p.c ${TESSALY_GENERATED_DIR}/dlldata.c)
target_include_directories(tessaly_proxy PRIVATE ${TESSALY_GENERATED_DIR})
target_compile_definitions(tessaly_proxy PRIVATE REGISTER_PROXY_DLL PROXY_DELEGATION
  ENTRY_PREFIX=Prx WIN32_LEAN_AND_MEAN)
# widl's stubs guard their calls with exception frames; rpcframes/ provides them for mingw.
target_include_directories(tessaly_proxy PRIVATE ${CMAKE_SOURCE_DIR}/rpcframes)
target_compile_options(tessaly_proxy PRIVATE -Wno-incompatible-pointer-types
  -include ${CMAKE_SOURCE_DIR}/rpcframes/ProxyPrelude.h)
if(TESSALY_TARGET STREQUAL "x86_64")
  # x86-64 finds handlers through unwind tables: a handler of our own serves widl's frames. A
  # function split into hot and cold parts would have two table entries, so keep each one whole.
  target_sources(tessaly_proxy PRIVATE ${CMAKE_SOURCE_DIR}/rpcframes/ExceptionFramesX64.c)
  # Our own code, unlike the generated files beside it: the project's warnings apply.
  set_source_files_properties(${CMAKE_SOURCE_DIR}/rpcframes/ExceptionFramesX64.c PROPERTIES
    COMPILE_OPTIONS "-Wall;-Wextra;-Wshadow;-Wcast-qual;-Wformat=2;-Wmissing-prototypes;-Wundef;-Werror")
  target_compile_options(tessaly_proxy PRIVATE -fno-reorder-blocks-and-partition)
endif()
