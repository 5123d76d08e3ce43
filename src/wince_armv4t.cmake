# ARM: the linker knows nothing of imports, exports and PE files. The first two become tables in assembler, linked as they
# are; cmake/elf_to_pe.py makes the DLL out of the linker's ELF file.
enable_language(ASM)
set(tables ${CMAKE_CURRENT_BINARY_DIR}/tables.s)
set(lines ".include \"platform/wince/armv4_tables.inc\"")

# Appends to `lines` what a library of the handset is asked for.
function(qv_append_imports key handset_library imports)
  list(APPEND lines "import_library ${key}, \"${handset_library}\"")
  foreach(import IN LISTS imports)
    string(REGEX REPLACE " == .*" "" symbol "${import}")
    string(REGEX REPLACE ".* == " "" name "${import}")
    list(APPEND lines "import ${key}, ${symbol}, \"${name}\"")
  endforeach()
  set(lines "${lines}" PARENT_SCOPE)
endfunction()

# Decorated names tell the calling convention of a member: E is thiscall, A is what ARM has for all functions.
list(TRANSFORM mail_store_imports REPLACE "@@QAE" "@@QAA")
qv_append_imports(coredll COREDLL.dll "${coredll_imports}")
qv_append_imports(mailstore MailStore.dll "${mail_store_imports}")

# include/qv_rapi.h is the one list of the exports.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/include/qv_rapi.h)
file(READ ${CMAKE_SOURCE_DIR}/include/qv_rapi.h header)
string(REGEX MATCHALL "QV_EXPORT [A-Za-z0-9_:]+ [A-Za-z0-9_]+" exports "${header}")
list(FILTER exports EXCLUDE REGEX "__attribute__")
list(TRANSFORM exports REPLACE ".* " "")
list(SORT exports)
list(LENGTH exports count)
list(APPEND lines "export_directory \"QV_RAPI.dll\", ${count}")
list(TRANSFORM exports PREPEND "export ")
list(APPEND lines ${exports})

list(JOIN lines "\n" lines)
file(GENERATE OUTPUT ${tables} CONTENT "${lines}\n")

set(linker_script ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/armv4.ld)
set_source_files_properties(${tables} PROPERTIES
  OBJECT_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/armv4_tables.inc)
add_executable(qv_rapi_elf platform/wince/runtime.cpp ${tables})
set_target_properties(qv_rapi_elf PROPERTIES OUTPUT_NAME QV_RAPI LINK_DEPENDS ${linker_script})
target_include_directories(qv_rapi_elf PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(qv_rapi_elf PRIVATE qv_agent_objects qv_layouts gcc)
target_link_options(qv_rapi_elf PRIVATE -Wl,--script=${linker_script})

set(elf $<TARGET_FILE:qv_rapi_elf>)
set(library ${CMAKE_CURRENT_BINARY_DIR}/QV_RAPI.dll)
set(converter ${CMAKE_SOURCE_DIR}/cmake/elf_to_pe.py)
add_custom_command(
  OUTPUT ${library}
  COMMAND /usr/bin/python3 ${converter} ${elf} ${library}
  DEPENDS qv_rapi_elf ${converter}
  VERBATIM)
# At each build, so that what is too large stays an error. The linker compiles, and says how much stack that takes.
add_custom_target(qv_rapi ALL
  COMMAND /usr/bin/python3 ${CMAKE_SOURCE_DIR}/cmake/library_figures.py ${library} ${elf} ${elf}.ltrans0.ltrans.su
  DEPENDS ${library}
  VERBATIM)
