# The handset library QV_RAPI.dll: the agent, its start-up routine, and the import libraries that it needs.

# Makes lib<name>.a, which leads to a library of the handset: each line of `exports` is a symbol, "== imported name"
# behind it where the two differ.
function(qv_add_import_library name handset_library exports)
  set(def ${CMAKE_CURRENT_BINARY_DIR}/${name}.def)
  set(library ${CMAKE_CURRENT_BINARY_DIR}/lib${name}.a)
  list(JOIN exports "\n" lines)
  file(GENERATE OUTPUT ${def} CONTENT "LIBRARY ${handset_library}\nEXPORTS\n${lines}\n")
  add_custom_command(
    OUTPUT ${library}
    COMMAND ${CMAKE_DLLTOOL} --input-def ${def} --output-lib ${library}
    DEPENDS ${def}
    VERBATIM)
endfunction()

# platform/coredll.h is the one list of the platform functions. Besides those the compiler and the standard headers call
# routines for memory and for the length of a text.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS platform/coredll.h platform/mail_store.h)
file(READ platform/coredll.h header)
string(REGEX MATCHALL "COREDLL\\(\"[^\"]+\"\\)" coredll_names "${header}")
list(TRANSFORM coredll_names REPLACE "COREDLL\\(\"(.+)\"\\)" "\\1")
list(APPEND coredll_names memcpy memmove memset memcmp strlen)
qv_add_import_library(coredll COREDLL.dll "${coredll_names}")

# platform/mail_store.h is the one list of the members of CMailDBSync, with their decorated names.
file(READ platform/mail_store.h header)
string(REGEX MATCHALL "MAIL_STORE\\(\"[^\"]+\", \"[^\"]+\"\\)" mail_store_names "${header}")
list(TRANSFORM mail_store_names REPLACE "MAIL_STORE\\(\"(.+)\", \"(.+)\"\\)" "mailstore_\\1 == \\2")
qv_add_import_library(mailstore MailStore.dll "${mail_store_names}")

set(import_libraries ${CMAKE_CURRENT_BINARY_DIR}/libcoredll.a ${CMAKE_CURRENT_BINARY_DIR}/libmailstore.a)
add_library(qv_rapi SHARED platform/wince/runtime.cpp ${import_libraries})
set_target_properties(qv_rapi PROPERTIES OUTPUT_NAME QV_RAPI PREFIX "")
target_link_libraries(qv_rapi PRIVATE qv_agent_objects qv_layouts ${import_libraries} gcc)
target_link_options(qv_rapi PRIVATE -Wl,--entry,_AgentStartUp)
