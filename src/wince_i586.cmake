# x86: the linker writes PE files; what is imported, it takes from import libraries.

# Makes lib<name>.a, which leads to a library of the handset.
function(qv_add_import_library name handset_library imports)
  set(def ${CMAKE_CURRENT_BINARY_DIR}/${name}.def)
  set(library ${CMAKE_CURRENT_BINARY_DIR}/lib${name}.a)
  list(JOIN imports "\n" lines)
  file(GENERATE OUTPUT ${def} CONTENT "LIBRARY ${handset_library}\nEXPORTS\n${lines}\n")
  add_custom_command(
    OUTPUT ${library}
    COMMAND ${CMAKE_DLLTOOL} --input-def ${def} --output-lib ${library}
    DEPENDS ${def}
    VERBATIM)
endfunction()

qv_add_import_library(coredll COREDLL.dll "${coredll_imports}")
qv_add_import_library(mailstore MailStore.dll "${mail_store_imports}")

set(import_libraries ${CMAKE_CURRENT_BINARY_DIR}/libcoredll.a ${CMAKE_CURRENT_BINARY_DIR}/libmailstore.a)
add_library(qv_rapi SHARED platform/wince/runtime.cpp ${import_libraries})
set_target_properties(qv_rapi PROPERTIES OUTPUT_NAME QV_RAPI PREFIX "")
target_link_libraries(qv_rapi PRIVATE qv_agent_objects qv_layouts ${import_libraries} gcc)
target_link_options(qv_rapi PRIVATE -Wl,--entry,_AgentStartUp)
