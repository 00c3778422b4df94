# What an installation holds: both libraries, the headers, the command-line program, rvxcv.pc and a CMake package. All
# paths in them are relative to the files themselves, so an installed tree can be moved as a whole.
include(CMakePackageConfigHelpers)

if(RVXCV_SANITIZE)
  return() # a library with sanitizers inside is for the tests alone
endif()

install(TARGETS rvxcore rvxcvl9 EXPORT rvxcvTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
if(TARGET rvxcv)
  install(TARGETS rvxcv RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  # Not CMAKE_INSTALL_DATADIR: the program looks for them in ../share.
  install(DIRECTORY tools/cascades/ DESTINATION share/rvxcv/cascades FILES_MATCHING PATTERN "*.json")
endif()

# Libraries and program find each other next to themselves, wherever the prefix is.
file(RELATIVE_PATH bin_to_lib /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(rvxcvl9 PROPERTIES INSTALL_RPATH "$ORIGIN")
if(TARGET rvxcv)
  set_target_properties(rvxcv PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
endif()

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/rvxcv)
install(EXPORT rvxcvTargets NAMESPACE rvxcv:: DESTINATION ${cmake_package_dir})
configure_package_config_file(cmake/rvxcvConfig.cmake.in ${PROJECT_BINARY_DIR}/rvxcvConfig.cmake
                              INSTALL_DESTINATION ${cmake_package_dir} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/rvxcvConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/rvxcvConfig.cmake ${PROJECT_BINARY_DIR}/rvxcvConfigVersion.cmake
        DESTINATION ${cmake_package_dir})

# ${pcfiledir} is where pkg-config found the file.
file(RELATIVE_PATH pc_to_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/rvxcv.pc.in ${PROJECT_BINARY_DIR}/rvxcv.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/rvxcv.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
