# The handset library QV_RAPI.dll: the agent, its start-up routine, what it imports and what it exports.

# platform/coredll.h is the one list of the platform functions. Besides those the compiler and the standard headers call
# routines for memory and for the length of a text.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS platform/coredll.h platform/mail_store.h)
file(READ platform/coredll.h header)
string(REGEX MATCHALL "COREDLL\\(\"[^\"]+\"\\)" coredll_imports "${header}")
list(TRANSFORM coredll_imports REPLACE "COREDLL\\(\"(.+)\"\\)" "\\1")
list(APPEND coredll_imports memcpy memmove memset memcmp strlen)

# platform/mail_store.h is the one list of the members of CMailDBSync, with their decorated names. Each import is a
# symbol and, where the two differ, "==" and the imported name.
file(READ platform/mail_store.h header)
string(REGEX MATCHALL "MAIL_STORE\\(\"[^\"]+\", \"[^\"]+\"\\)" mail_store_imports "${header}")
list(TRANSFORM mail_store_imports REPLACE "MAIL_STORE\\(\"(.+)\", \"(.+)\"\\)" "mailstore_\\1 == \\2")

# include/qv_rapi.h is the one list of the exports. Whoever asks for one searches by halving.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/qv_rapi.h)
file(READ ${CMAKE_SOURCE_DIR}/include/qv_rapi.h header)
string(REGEX MATCHALL "QV_EXPORT [A-Za-z0-9_:]+ [A-Za-z0-9_]+" exports "${header}")
list(TRANSFORM exports REPLACE ".* " "")
list(SORT exports)

# What either machine's file makes `library` of; it also sets `figures_from`.
set(handset_sources platform/wince/runtime.cpp)
set(handset_libraries qv_agent_objects qv_layouts qv_agent_options gcc)
set(library ${CMAKE_CURRENT_BINARY_DIR}/QV_RAPI.dll)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL armv4)
  include(wince-armv4.cmake)
else()
  include(wince-x86.cmake)
endif()

# At each build, so that what is too large stays an error. The linker compiles, all in one part (-flto-partition=one),
# and says beside its output how much stack the functions of that part take (.ltrans0.ltrans.su).
add_custom_target(qv_rapi ALL
  COMMAND /usr/bin/python3 ${CMAKE_SOURCE_DIR}/cmake/library_figures.py ${library} ${figures_from}
  DEPENDS ${library}
  COMMENT "Measuring QV_RAPI.dll"
  VERBATIM)
