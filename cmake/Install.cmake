# Installation: libraries (component runtime), headers, a CMake package and a pkg-config file
# (development), pages (documentation). tools/CMakeLists.txt adds vobidb (tools).
set(VOBIUTILS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/vobiutils)

set(VOBIUTILS_INSTALLED vobiutils)
if(NOT VOBIUTILS_SYSTEM_JSONSCHEMA)
    list(APPEND VOBIUTILS_INSTALLED jsonschema-c)
    install(FILES jsonschema/jsonschema.h
            DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endif()
install(TARGETS ${VOBIUTILS_INSTALLED} EXPORT vobiutilsTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
                COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development FILES_MATCHING PATTERN "*.h")
install(EXPORT vobiutilsTargets NAMESPACE vobiutils::
        DESTINATION ${VOBIUTILS_CMAKE_DIR} COMPONENT development)

# A program that links the static libraries must also link what these use. The shared ones name it
# themselves.
if(NOT BUILD_SHARED_LIBS)
    set(PKGCONFIG_LIBS_PRIVATE "-ljsonschema-c ${CMAKE_THREAD_LIBS_INIT}")
endif()
if(NOT BUILD_SHARED_LIBS AND NOT VOBIUTILS_SYSTEM_JSONSCHEMA)
    set(PKGCONFIG_REQUIRES_PRIVATE libpcre2-8)
endif()

configure_package_config_file(cmake/vobiutilsConfig.cmake.in
    ${PROJECT_BINARY_DIR}/vobiutilsConfig.cmake INSTALL_DESTINATION ${VOBIUTILS_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vobiutilsConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/vobiutilsConfig.cmake
              ${PROJECT_BINARY_DIR}/vobiutilsConfigVersion.cmake
        DESTINATION ${VOBIUTILS_CMAKE_DIR} COMPONENT development)

# The prefix as seen from the pkg-config file, so that the installed tree can be moved.
file(RELATIVE_PATH PKGCONFIG_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/vobiutils.pc.in ${PROJECT_BINARY_DIR}/vobiutils.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vobiutils.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The output of scripts/docs.sh. The suffix of the manual pages tells them from other pages of their
# name.
if(VOBIUTILS_DOCS)
    file(GLOB pages ${VOBIUTILS_DOCS}/man/man3/*.3)
    foreach(page IN LISTS pages)
        get_filename_component(name ${page} NAME)
        install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man3
                RENAME ${name}vobiutils COMPONENT documentation)
    endforeach()
    install(DIRECTORY ${VOBIUTILS_DOCS}/html docs examples
            DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
    install(FILES README.md CHANGELOG.md CONTRIBUTING.md
            DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
endif()
