# Windows CE 4.10 on x86, built with the MinGW compiler as a bare code generator: nothing of desktop Windows, neither
# its headers nor its libraries, goes into the handset library.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86)
set(CMAKE_C_COMPILER i686-w64-mingw32-gcc-win32)
set(CMAKE_CXX_COMPILER i686-w64-mingw32-g++-win32)
set(CMAKE_DLLTOOL i686-w64-mingw32-dlltool)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # a test program could not be linked
set(CMAKE_C_STANDARD_LIBRARIES "")
set(CMAKE_CXX_STANDARD_LIBRARIES "")

set(QV_WINCE ON)

# The handset's processor has no SSE, and its system keeps stacks aligned to 4 bytes only. Data sections of their own
# would put the zeroed data into the file.
set(flags "-march=i586 -mno-sse -mpreferred-stack-boundary=2 -mincoming-stack-boundary=2")
set(CMAKE_C_FLAGS_INIT "${flags}")
set(CMAKE_CXX_FLAGS_INIT "${flags}")

# What the system's loader looks at: versions, and no flags that it does not know. Without time stamp and symbols, and
# with a base that the linker does not make up from the file's name, the same sources give the same bytes.
set(link_flags
  -s -Wl,--subsystem,wince:4.10 -Wl,--major-os-version,4 -Wl,--minor-os-version,10
  -Wl,--disable-dynamicbase -Wl,--disable-nxcompat
  -Wl,--no-insert-timestamp -Wl,--image-base,0x10000000)
list(JOIN link_flags " " CMAKE_SHARED_LINKER_FLAGS_INIT)
