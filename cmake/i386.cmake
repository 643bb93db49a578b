# 32-bit System V ABI on an x86-64 host, with its own multilib compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
# -march alone would tune for that processor, with unaligned loads in halves.
set(CMAKE_C_FLAGS_INIT "-m32 -march=i686 -mtune=generic -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -march=i686 -mtune=generic -msse2 -mfpmath=sse")
# Where the i386 packages of Debian put libraries; a compiler that was probed before
# the first of them was installed does not tell.
if(EXISTS /etc/debian_version)
  set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR "")
