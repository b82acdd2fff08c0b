# 32-bit ARM with software floating point (ARMv5TE and newer): the panel.
set(micro800_triple arm-linux-gnueabi)
include("${CMAKE_CURRENT_LIST_DIR}/arm.cmake")
