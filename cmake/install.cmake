# Installation: library with its debug information apart, headers, documents, pkg-config file and
# CMake package kef::kef. A directory that was not given as an absolute one is relative to the
# prefix, which every file finds from its own place, so that a tree can be moved.
include(CMakePackageConfigHelpers)

# A member for wider vectors is the library alone, at the place below the generic member's where the
# loader looks first.
if(KEF_MEMBER AND BUILD_SHARED_LIBS)
  set(KEF_LIBRARY_DIR ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${KEF_MEMBER})
  install(TARGETS kef LIBRARY DESTINATION ${KEF_LIBRARY_DIR} NAMELINK_SKIP)
else()
  set(KEF_LIBRARY_DIR $<IF:$<BOOL:${WIN32}>,${CMAKE_INSTALL_BINDIR},${CMAKE_INSTALL_LIBDIR}>)
  install(TARGETS kef EXPORT kef-targets)
endif()

# The installed library is stripped. What a debugger reads goes to .debug beside it, where
# debuggers look.
if(BUILD_SHARED_LIBS AND CMAKE_OBJCOPY)
  install(CODE "
    set(file $<TARGET_FILE_NAME:kef>)
    set(directory \"${KEF_LIBRARY_DIR}\")
    if(NOT IS_ABSOLUTE \"\${directory}\")
      string(PREPEND directory \"\${CMAKE_INSTALL_PREFIX}/\")
    endif()
    string(PREPEND directory \"\$ENV{DESTDIR}\")
    file(MAKE_DIRECTORY \"\${directory}/.debug\")
    foreach(step \"--only-keep-debug;\${file};.debug/\${file}.debug\"
        \"--strip-unneeded;--add-gnu-debuglink=.debug/\${file}.debug;\${file}\")
      execute_process(COMMAND ${CMAKE_OBJCOPY} \${step}
        WORKING_DIRECTORY \"\${directory}\" COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
  ")
endif()

if(KEF_MEMBER AND BUILD_SHARED_LIBS)
  return()
endif()

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING
  PATTERN "kef_*.h" PATTERN "kef_*_status.def" PATTERN "*.hpp")
install(FILES README.md CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")

# Import libraries under both names that linkers look for, and the list to make another one of.
if(WIN32 AND BUILD_SHARED_LIBS)
  install(FILES $<TARGET_LINKER_FILE:kef> DESTINATION ${CMAKE_INSTALL_LIBDIR} RENAME kef.lib)
  install(FILES ${CMAKE_BINARY_DIR}/kef.def DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

install(EXPORT kef-targets NAMESPACE kef:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kef)
write_basic_package_version_file(kef-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/kef-config.cmake ${CMAKE_CURRENT_BINARY_DIR}/kef-config-version.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/kef)

if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(KEF_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  set(KEF_PC_PREFIX "\${pcfiledir}/${up}")
endif()
foreach(directory LIBDIR INCLUDEDIR)
  set(KEF_PC_${directory} ${CMAKE_INSTALL_${directory}})
  if(NOT IS_ABSOLUTE "${CMAKE_INSTALL_${directory}}")
    set(KEF_PC_${directory} "\${prefix}/${CMAKE_INSTALL_${directory}}")
  endif()
endforeach()
set(KEF_PC_CFLAGS)
if(NOT BUILD_SHARED_LIBS)
  set(KEF_PC_CFLAGS " -DKEF_API=")
endif()
configure_file(cmake/kef.pc.in kef.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/kef.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
