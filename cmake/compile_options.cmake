# Two sets of options: qv_agent_options for what runs on the handset, qv_host_options for what stands around it.
add_compile_options("-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=")

add_library(qv_warnings INTERFACE)
target_compile_options(qv_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Werror)
# At -O3 GCC 12 sees overlaps in std::string's own concatenation, where there are none.
target_compile_options(qv_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)

# The agent: no exceptions, no RTTI, nothing that needs a runtime.
add_library(qv_agent_options INTERFACE)
target_include_directories(qv_agent_options INTERFACE ${CMAKE_SOURCE_DIR}/src ${CMAKE_SOURCE_DIR}/include)
target_compile_options(qv_agent_options INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti
                                                  -fno-threadsafe-statics> -fno-strict-aliasing
                       $<$<CXX_COMPILER_ID:Clang>:-Wglobal-constructors -Wexit-time-destructors>)
target_link_libraries(qv_agent_options INTERFACE qv_warnings)

if(QV_WINCE)
  # No runtime stands behind the library, and what nobody calls is left out. Optimising at link time makes it a tenth
  # smaller; in more than one part, GCC 12 for x86 breaks off with an internal error. The system's stacks grow a page at
  # a time, so no frame may be larger: what is inlined must not gather on one, and cmake/library_figures.py looks at what
  # the compiler says of each. The linker is told the same, because it is there that functions are compiled.
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
  set(QV_WINCE_OPTIONS -fno-asynchronous-unwind-tables -fno-stack-protector -fno-ident -ffunction-sections
                       -flto-partition=one -fconserve-stack -fstack-usage)
  add_compile_definitions(QV_WINCE)
  add_compile_options(${QV_WINCE_OPTIONS})
  add_link_options(${QV_WINCE_OPTIONS} -nostdlib -nostartfiles -Wl,--gc-sections)
  return()
endif()

set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
if(NOT CMAKE_SYSTEM_PROCESSOR STREQUAL arm)
  # The x86 handset library calls with 4-byte aligned stacks. GCC realigns functions that only call others when it is
  # told how little alignment comes in; Clang realigns all.
  add_compile_options(-m32 -mstackrealign $<$<C_COMPILER_ID:GNU>:-mincoming-stack-boundary=2>)
  add_link_options(-m32)
endif()
add_compile_definitions(_FILE_OFFSET_BITS=64)

if(QV_SANITIZE)
  # vptr and function need RTTI, which the agent has not.
  set(QV_SANITIZER_OPTIONS -fsanitize=address,undefined -fno-sanitize=vptr,function -fno-sanitize-recover=all
                           -fno-omit-frame-pointer)
  target_compile_options(qv_warnings INTERFACE ${QV_SANITIZER_OPTIONS})
  add_link_options(${QV_SANITIZER_OPTIONS})
else()
  # A library names all that it needs. With Clang's sanitizers it cannot: their functions are the program's.
  add_link_options(-Wl,--no-undefined)
endif()

add_library(qv_host_options INTERFACE)
target_include_directories(qv_host_options INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/src
                                                     ${CMAKE_SOURCE_DIR}/include)
target_link_libraries(qv_host_options INTERFACE qv_warnings)
