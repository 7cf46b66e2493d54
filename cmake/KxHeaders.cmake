# Headers that are made, and headers that are not installed.

# Only included by source files of their own folder.
set(KX_PRIVATE_HEADERS
    core/ClassLoggers.h
    core/MemRows.h
    core/MemSlabTree.h
    core/MemSlabs.h
    core/NotedLogger.h
    sipobject/KxNameRegistry.h
    sipobject/KxSipEscapes.h
    sipobject/KxSipHost.h
    sipobject/KxSipLineText.h
    sipobject/KxSipObjectParamDefs.h
    sipobject/address/KxSipURLHeadersParser.h
    sipobject/address/KxSipURLParser.h
    sipobject/address/KxSipURLParts.h
    sipobject/address/KxSipURLToken.h
    sipobject/address/KxSipUsualURL.h
    sipobject/address/KxURIEquivalence.h
    sipobject/auth/KxSipAuthParamReader.h
    sipobject/auth/KxSipAuthParamWriter.h
    sipobject/auth/KxSipAuthToken.h
    sipobject/auth/KxSipDigestAlgorithm.h
    sipobject/auth/KxSipDigestFields.h
    sipobject/auth/KxSipPropertyScanner.h
    sipobject/auth/KxSipPropertyWriter.h
    sipobject/auth/KxSipSchemeLine.h
    sipobject/auth/KxSipSha.h
    sipobject/headers/KxSipCompactNames.h
    sipobject/headers/KxSipHeaderKinds.h
    sipobject/headers/KxSipLineValues.h
    sipobject/messages/KxSipLikeness.h
    sipobject/messages/KxSipMessageReader.h
    sipobject/messages/KxSipReportedBytes.h
    sipobject/messages/KxSipRequestLine.h
    sipobject/messages/KxSipRequestOutline.h
    sipobject/messages/KxSipRequiredHeaders.h
    sipobject/messages/KxSipTokenText.h
    sipobject/messages/KxSipTransactionKey.h
    util/KxByteScan.h
    util/KxPairIndex.h
    util/KxParametersStore.h)

set(KX_GENERATED_DIR "${PROJECT_BINARY_DIR}/generated")
configure_file("${PROJECT_SOURCE_DIR}/cmake/KxSipVersion.h.in" "${KX_GENERATED_DIR}/sipobject/KxSipVersion.h" @ONLY)

# kx_add_umbrella(<folder> <file> <further headers>...)
# Makes the header <folder>/<file>, which includes every public header of the folder, and the further ones.
function(kx_add_umbrella folder file)
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "${PROJECT_SOURCE_DIR}/${folder}/*.h")
    list(REMOVE_ITEM headers ${KX_PRIVATE_HEADERS})
    list(APPEND headers ${ARGN})
    list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"\n")
    list(JOIN headers "" headers)
    file(CONFIGURE OUTPUT "${KX_GENERATED_DIR}/${folder}/${file}"
        CONTENT "#pragma once\n\n// The whole library. It takes longer to compile than the headers that a file needs.\n\n${headers}")
endfunction()

# The first one has the streams that a host needs, too.
kx_add_umbrella(sipobject KxSipObject.h sipobject/KxSipVersion.h util/KxByteArrayInputStream.h
    util/KxByteArrayOutputStream.h)
kx_add_umbrella(sipheaders KxSipHeaders.h)
