# What libvxsubtitle.so is made of: one path per line, sorted.

set(VXSUBTITLE_SOURCES
    subtitle/MPEGSubtitleDecoder.cpp
    subtitle/SubtitleFileProcess.cpp
    subtitle/SubtitleParser.cpp
    subtitle/SubtitleParserInternal.cpp
    subtitle/SubtitleParserSMI.cpp
    subtitle/SubtitleParserSRT.cpp
    subtitle/SubtitleParserSSA.cpp
    subtitle/SubtitleParserSUB.cpp
    subtitle/SubtitleParserSUBIDX.cpp
    subtitle/SubtitleParserSUPWrapper.cpp
    subtitle/SubtitleParserTXT.cpp
    subtitle/charset/Charset.cpp
    subtitle/charset/CharsetTables.cpp
    subtitle/charset/CharsetTablesBig5.cpp
    subtitle/charset/CharsetTablesGbk.cpp
    subtitle/parser/EncodingCheck.cpp
    subtitle/parser/EntryText.cpp
    subtitle/parser/ParserWorker.cpp
    subtitle/parser/SubDialect.cpp
    subtitle/parser/TagTable.cpp
    subtitle/parser/TextParser.cpp
    subtitle/system/Descriptor.cpp
    subtitle/system/LowMemory.cpp
    subtitle/system/Worker.cpp
    subtitle/system/ZeroPages.cpp
    subtitle/vobsub/Blit.cpp
    subtitle/vobsub/FileWindow.cpp
    subtitle/vobsub/IndexScan.cpp
    subtitle/vobsub/UnitReader.cpp
)

# Installed for players and plug-ins.
set(VXSUBTITLE_PUBLIC_HEADERS
    subtitle/MPEGSubtitleDecoder.h
    subtitle/SubtitleFileProcess.h
    subtitle/SubtitleParser.h
    subtitle/SubtitleParserInternal.h
    subtitle/SubtitleParserSMI.h
    subtitle/SubtitleParserSRT.h
    subtitle/SubtitleParserSSA.h
    subtitle/SubtitleParserSUB.h
    subtitle/SubtitleParserSUBIDX.h
    subtitle/SubtitleParserSUPWrapper.h
    subtitle/SubtitleParserTXT.h
    subtitle/SubtitleTypes.h
)

# The dialects of the .sub extension stand in a list of their own, a row each.
set(VXSUBTITLE_SUB_DIALECTS_FILE ${CMAKE_CURRENT_LIST_DIR}/../subtitle/parser/SubDialects.def)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${VXSUBTITLE_SUB_DIALECTS_FILE})
file(STRINGS ${VXSUBTITLE_SUB_DIALECTS_FILE} rows REGEX "^VX_SUB_DIALECT\\(")
set(VXSUBTITLE_SUB_DIALECTS)         # class names
set(VXSUBTITLE_SUB_DIALECT_TARGETS)  # names of their fuzz targets, in the same order
foreach(row IN LISTS rows)
    if(NOT row MATCHES "^VX_SUB_DIALECT\\(([A-Za-z0-9]+), [A-Z0-9_]+, ([a-z0-9]+), ")
        message(FATAL_ERROR "${VXSUBTITLE_SUB_DIALECTS_FILE}: not a row of the list: ${row}")
    endif()
    list(APPEND VXSUBTITLE_SUB_DIALECTS SubtitleParser${CMAKE_MATCH_1})
    list(APPEND VXSUBTITLE_SUB_DIALECT_TARGETS ${CMAKE_MATCH_2})
endforeach()
foreach(class IN LISTS VXSUBTITLE_SUB_DIALECTS)
    list(APPEND VXSUBTITLE_SOURCES subtitle/${class}.cpp)
    list(APPEND VXSUBTITLE_PUBLIC_HEADERS subtitle/${class}.h)
    string(APPEND dialect_headers "#include \"subtitle/${class}.h\"\n")
endforeach()

# <SubDialectHeaders.h>: for programs that need every dialect's class.
set(VXSUBTITLE_GENERATED_DIR ${PROJECT_BINARY_DIR}/generated)
file(CONFIGURE OUTPUT ${VXSUBTITLE_GENERATED_DIR}/SubDialectHeaders.h CONTENT "#pragma once\n${dialect_headers}" @ONLY)
