# 32-bit ARM, the television's processor: Debian's cross compiler, programs run through qemu.
# No -L prefix for qemu: with libc6:armhf installed it would mix two C libraries.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_CXX_FLAGS_INIT -mfpu=neon)  # as the platform's own builds have it
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
