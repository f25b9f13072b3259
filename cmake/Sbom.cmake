# A list of what the packages consist of and depend on, in SPDX, with the versions that the library is built with.
# SOURCE_DATE_EPOCH sets its date.
string(TIMESTAMP SBOM_CREATED UTC)
set(SBOM_VERSIONS ${JSON_C_VERSION}-${PCRE2_VERSION})

function(sbom_add name version licence)
    string(APPEND SBOM_PACKAGES "    { \"SPDXID\": \"SPDXRef-${name}\", \"name\": \"${name}\", \
\"versionInfo\": \"${version}\", \"licenseDeclared\": \"${licence}\", \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false },\n")
    set(SBOM_PACKAGES ${SBOM_PACKAGES} PARENT_SCOPE)
endfunction()

function(sbom_relate from relation to)
    string(APPEND SBOM_RELATIONSHIPS "    { \"spdxElementId\": \"SPDXRef-${from}\", \
\"relationshipType\": \"${relation}\", \"relatedSpdxElement\": \"SPDXRef-${to}\" },\n")
    set(SBOM_RELATIONSHIPS ${SBOM_RELATIONSHIPS} PARENT_SCOPE)
endfunction()

sbom_add(libvobiutils ${PROJECT_VERSION} NOASSERTION)
sbom_add(libjsonschema-c ${PROJECT_VERSION} NOASSERTION)
sbom_add(json-c ${JSON_C_VERSION} MIT)
sbom_add(pcre2 ${PCRE2_VERSION} BSD-3-Clause)
sbom_relate(DOCUMENT DESCRIBES libvobiutils)
sbom_relate(libvobiutils CONTAINS libjsonschema-c)
sbom_relate(libvobiutils DEPENDS_ON json-c)
sbom_relate(libjsonschema-c DEPENDS_ON json-c)
sbom_relate(libjsonschema-c DEPENDS_ON pcre2)
foreach(list SBOM_PACKAGES SBOM_RELATIONSHIPS)
    string(REGEX REPLACE "^ +|,\n$" "" ${list} "${${list}}")
endforeach()
configure_file(cmake/sbom.spdx.json.in ${PROJECT_BINARY_DIR}/libvobiutils.spdx.json @ONLY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    install(FILES ${PROJECT_BINARY_DIR}/libvobiutils.spdx.json COMPONENT ${component}
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
endforeach()
