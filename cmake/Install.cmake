# Installation: libraries, headers, a CMake package and a pkg-config file.
set(VOBIUTILS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vobiutils)

# The options are private to the build, but a target that is linked must be exported.
set(VOBIUTILS_INSTALLED vobiutils)
if(NOT VOBIUTILS_SYSTEM_JSONSCHEMA)
    list(APPEND VOBIUTILS_INSTALLED jsonschema-c)
    install(FILES jsonschema/jsonschema.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
install(TARGETS ${VOBIUTILS_INSTALLED} EXPORT vobiutilsTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(EXPORT vobiutilsTargets NAMESPACE vobiutils:: DESTINATION ${VOBIUTILS_CMAKE_DIR})

configure_package_config_file(cmake/vobiutilsConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vobiutilsConfig.cmake INSTALL_DESTINATION ${VOBIUTILS_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vobiutilsConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vobiutilsConfig.cmake
              ${PROJECT_BINARY_DIR}/vobiutilsConfigVersion.cmake
        DESTINATION ${VOBIUTILS_CMAKE_DIR})

# Relative to itself, so that the installed tree can be moved.
file(RELATIVE_PATH PKGCONFIG_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/vobiutils.pc.in ${PROJECT_BINARY_DIR}/vobiutils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vobiutils.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
