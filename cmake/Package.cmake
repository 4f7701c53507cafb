# find_package(QVEffects) and pkg-config.

include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QVEffects)
install(EXPORT QVEffectsTargets NAMESPACE QVEffects:: DESTINATION ${package_dir})
configure_package_config_file(cmake/QVEffectsConfig.cmake.in QVEffectsConfig.cmake
  INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(QVEffectsConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QVEffectsConfig.cmake
              ${PROJECT_BINARY_DIR}/QVEffectsConfigVersion.cmake
  DESTINATION ${package_dir})

file(RELATIVE_PATH package_prefix /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/qveffects.pc.in qveffects.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qveffects.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
