# Run by cpack between installing and packing. The folders that an install makes have the modes that the umask of
# the packing user leaves them, regardless of the settings of CMake; a package is for everybody.
file(GLOB_RECURSE entries LIST_DIRECTORIES true "${CPACK_TEMPORARY_DIRECTORY}/*")
foreach(entry IN LISTS entries ITEMS "${CPACK_TEMPORARY_DIRECTORY}")
  if(IS_DIRECTORY "${entry}")
    file(CHMOD "${entry}" DIRECTORY_PERMISSIONS
         OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  endif()
endforeach()
