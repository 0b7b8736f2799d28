include(CMakePackageConfigHelpers)

set(kxsim_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/kxsim_design")

install(TARGETS vexal mf0 kxsim_design EXPORT kxsim_design_targets)
install(DIRECTORY src/ "${PROJECT_BINARY_DIR}/gen/"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kxsim"
  FILES_MATCHING PATTERN "*.h" PATTERN "detail" EXCLUDE)
install(EXPORT kxsim_design_targets NAMESPACE kxsim:: DESTINATION "${kxsim_package_dir}")

configure_package_config_file(cmake/kxsim_design-config.cmake.in
  "${PROJECT_BINARY_DIR}/kxsim_design-config.cmake" INSTALL_DESTINATION "${kxsim_package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/kxsim_design-config-version.cmake"
  COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/kxsim_design-config.cmake"
  "${PROJECT_BINARY_DIR}/kxsim_design-config-version.cmake"
  DESTINATION "${kxsim_package_dir}")
