# The handset library QV_RAPI.dll: the agent, its start-up routine, and the import library of COREDLL.dll that it needs.

# platform/coredll.h is the one list of the platform functions. Besides those the compiler and the standard headers call
# routines for memory and for the length of a text.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS platform/coredll.h)
file(READ platform/coredll.h header)
string(REGEX MATCHALL "COREDLL\\(\"[^\"]+\"\\)" coredll_names "${header}")
list(TRANSFORM coredll_names REPLACE "COREDLL\\(\"(.+)\"\\)" "\\1")
list(APPEND coredll_names memcpy memmove memset memcmp strlen)
list(JOIN coredll_names "\n" coredll_names)

set(coredll_def ${CMAKE_CURRENT_BINARY_DIR}/coredll.def)
set(coredll_library ${CMAKE_CURRENT_BINARY_DIR}/libcoredll.a)
file(GENERATE OUTPUT ${coredll_def} CONTENT "LIBRARY COREDLL.dll\nEXPORTS\n${coredll_names}\n")
add_custom_command(
  OUTPUT ${coredll_library}
  COMMAND ${CMAKE_DLLTOOL} --input-def ${coredll_def} --output-lib ${coredll_library}
  DEPENDS ${coredll_def}
  VERBATIM)

add_library(qv_rapi SHARED platform/wince/runtime.cpp ${coredll_library})
set_target_properties(qv_rapi PROPERTIES OUTPUT_NAME QV_RAPI PREFIX "")
target_link_libraries(qv_rapi PRIVATE qv_agent_objects qv_layouts ${coredll_library} gcc)
target_link_options(qv_rapi PRIVATE -Wl,--entry,_AgentStartUp)
