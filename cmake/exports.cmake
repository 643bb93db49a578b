# A module-definition file of the vector-math tables, from the list of all functions.
# Windows exports data by it; functions carry their own mark. The name is for the list of all exports
# that the linker makes of it.
function(kef_write_table_exports surface target)
  file(STRINGS ${surface} rows REGEX "^KEF_ROW")
  set(text "LIBRARY kef.dll\nEXPORTS\n")
  foreach(row IN LISTS rows)
    string(REGEX REPLACE "^KEF_ROW\\(([a-z]), ([A-Za-z0-9]+).*" "\\1\\2" name "${row}")
    string(APPEND text "kef_vtm_kernel_${name}_ttab DATA\nkef_vtm_kernel_${name}_ctab DATA\n")
  endforeach()
  file(CONFIGURE OUTPUT ${target} CONTENT "${text}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${surface})
endfunction()
