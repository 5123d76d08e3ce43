# x86: the linker writes PE files; what is imported, it takes from import libraries.

# Writes <name>.def: the library's name and the names that are imported from it or exported by it.
function(qv_write_def name handset_library names)
  list(JOIN names "\n" lines)
  file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${name}.def
       CONTENT "LIBRARY ${handset_library}\nEXPORTS\n${lines}\n")
endfunction()

# Makes lib<name>.a, which leads to a library of the handset.
function(qv_add_import_library name handset_library imports)
  qv_write_def(${name} ${handset_library} "${imports}")
  set(def ${CMAKE_CURRENT_BINARY_DIR}/${name}.def)
  set(import_library ${CMAKE_CURRENT_BINARY_DIR}/lib${name}.a)
  add_custom_command(
    OUTPUT ${import_library}
    COMMAND ${CMAKE_DLLTOOL} --input-def ${def} --output-lib ${import_library}
    DEPENDS ${def}
    VERBATIM)
endfunction()

qv_add_import_library(coredll COREDLL.dll "${coredll_imports}")
qv_add_import_library(mailstore MailStore.dll "${mail_store_imports}")
qv_write_def(exports QV_RAPI.dll "${exports}")

set(import_libraries ${CMAKE_CURRENT_BINARY_DIR}/libcoredll.a ${CMAKE_CURRENT_BINARY_DIR}/libmailstore.a)
set(linker_script ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/x86.ld)
add_library(qv_rapi_dll SHARED ${handset_sources} ${import_libraries} ${CMAKE_CURRENT_BINARY_DIR}/exports.def)
set_target_properties(qv_rapi_dll PROPERTIES OUTPUT_NAME QV_RAPI PREFIX "" LINK_DEPENDS ${linker_script})
target_link_libraries(qv_rapi_dll PRIVATE ${handset_libraries} ${import_libraries})
target_link_options(qv_rapi_dll PRIVATE -Wl,--entry,_AgentStartUp -Wl,--require-defined=_AgentStartUp
                                        ${linker_script})

set(figures_from ${library}.ltrans0.ltrans.su)
