# Debian packages: the libraries, vobidb, what it takes to build with the libraries, and the documentation.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "libvobiutils maintainers <vobiutils@example.net>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL runtime development documentation)
if(VOBIUTILS_BUILD_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_STRIP_FILES ON)

# The Debian names of the components.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libvobiutils${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Settings, logging, documents with paths, a configuration database of JSON
 files, a login lock-out record and message names.")

# What else it needs, the library needs, too.
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME vobidb)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "Reads and changes the databases of a gateway from the shell.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvobiutils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${PROJECT_VERSION}), libjson-c-dev (>= ${VOBIUTILS_JSON_C_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, a CMake package and a pkg-config file.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME libvobiutils-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_COMPONENT_DOCUMENTATION_DESCRIPTION
    "Manual pages, the documentation in HTML, and the examples.")
if(NOT VOBIUTILS_SYSTEM_JSONSCHEMA)  # whose contents are the platform's
    include(cmake/Sbom.cmake)
endif()
include(CPack)
