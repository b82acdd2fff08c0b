# 32-bit ARM with a floating-point unit (ARMv7): panels of a later make.
set(micro800_triple arm-linux-gnueabihf)
include("${CMAKE_CURRENT_LIST_DIR}/arm.cmake")
