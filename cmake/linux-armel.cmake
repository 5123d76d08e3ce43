# The tests on ARM Linux, which qemu runs: Clang, because GCC's cross compiler and its 32-bit x86 libraries exclude each
# other as packages. Floating point is soft, as it is in the handset library. The processor is newer than that
# library's: for older ones Clang leaves atomic numbers, which the C++ library has, to a library of their own.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET arm-linux-gnueabi)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabi)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabi)

set(CMAKE_C_FLAGS_INIT "-march=armv7-a -mfloat-abi=soft -O1")
set(CMAKE_CXX_FLAGS_INIT "-march=armv7-a -mfloat-abi=soft -O1")
