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

list(LENGTH exports count)
list(APPEND lines "export_directory \"QV_RAPI.dll\", ${count}")
list(TRANSFORM exports PREPEND "export ")
list(APPEND lines ${exports})

list(JOIN lines "\n" lines)
file(GENERATE OUTPUT ${tables} CONTENT "${lines}\n")

set(linker_script ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/armv4.ld)
set_source_files_properties(${tables} PROPERTIES
  OBJECT_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/platform/wince/armv4_tables.inc)
add_executable(qv_rapi_elf ${handset_sources} ${tables})
set_target_properties(qv_rapi_elf PROPERTIES OUTPUT_NAME QV_RAPI LINK_DEPENDS ${linker_script})
target_link_libraries(qv_rapi_elf PRIVATE ${handset_libraries})
target_link_options(qv_rapi_elf PRIVATE -Wl,--script=${linker_script} -Wl,--require-defined=AgentStartUp)

set(elf $<TARGET_FILE:qv_rapi_elf>)
set(converter ${CMAKE_SOURCE_DIR}/cmake/elf_to_pe.py)
add_custom_command(
  OUTPUT ${library}
  COMMAND /usr/bin/python3 ${converter} ${elf} ${library}
  DEPENDS qv_rapi_elf ${converter}
  VERBATIM)
set(figures_from --elf=${elf} ${elf}.ltrans0.ltrans.su)
