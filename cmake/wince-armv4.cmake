# Windows CE 4.10 on ARM: the bare-metal compiler makes ELF objects, its linker one ELF file, and cmake/elf_to_pe.py the
# DLL out of that, because no linker writes PE files for this machine.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR armv4)
set(CMAKE_C_COMPILER arm-none-eabi-gcc)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # a test program could not be linked
set(CMAKE_EXECUTABLE_SUFFIX_C .elf)
set(CMAKE_EXECUTABLE_SUFFIX_CXX .elf)

set(QV_WINCE ON)

# The standard headers are those that the tests' ARM programs are built with, because the compiler's own come with 1.5 GB
# of libraries for other processors. Nothing but templates and types is taken from them: no C library is linked.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
                OUTPUT_VARIABLE compiler_headers OUTPUT_STRIP_TRAILING_WHITESPACE)
set(headers /usr/arm-linux-gnueabi/include)
set(cxx_headers -isystem ${headers}/c++/12 -isystem ${headers}/c++/12/arm-linux-gnueabi)
set(c_headers -D_GNU_SOURCE -nostdinc -isystem ${headers} -isystem ${compiler_headers})

# ARM state and no floating-point unit: what every handset's processor runs. Up to armv4t the compiler uses no
# instruction that wants stacks aligned to 8 bytes, which the system does not promise. Enumerations are words, as in the
# system's own compiler.
set(machine "-march=armv4t -mfloat-abi=soft")
set(CMAKE_ASM_FLAGS_INIT "${machine}")
set(flags "${machine} -marm -fno-short-enums -fno-unwind-tables -fdata-sections")
list(JOIN c_headers " " c_headers)
list(JOIN cxx_headers " " cxx_headers)
set(CMAKE_C_FLAGS_INIT "${flags} ${c_headers}")
set(CMAKE_CXX_FLAGS_INIT "${flags} ${cxx_headers} ${c_headers}")

# The converter needs the relocations.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-Wl,--emit-relocs -Wl,--build-id=none -Wl,--no-warn-rwx-segments")
