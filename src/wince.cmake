# The handset library QV_RAPI.dll: the agent, its start-up routine, and what it imports.

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

include(wince_${CMAKE_SYSTEM_PROCESSOR}.cmake)
