include("${CMAKE_CURRENT_LIST_DIR}/kef-targets.cmake")
