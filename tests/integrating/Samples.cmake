# The code blocks of a document, each a file of its own.
#
#     include(Samples.cmake), then vx_samples(DOCUMENT FOLDER NAMES)
#     cmake -DDOCUMENT=docs/integrating.md -DFOLDER=samples -P Samples.cmake
#
# A block is a sample when the line before it names its file: <!-- sample: player.cpp -->

cmake_minimum_required(VERSION 3.25)

# What of `text` stands behind the first `part` goes into `behind`.
function(vx_behind text part behind)
    string(FIND "${text}" "${part}" at)
    string(LENGTH "${part}" length)
    math(EXPR at "${at} + ${length}")
    string(SUBSTRING "${text}" ${at} -1 rest)
    set(${behind} "${rest}" PARENT_SCOPE)
endfunction()

# Writes the samples of `document` into `folder`; the list of their names goes into `names`.
function(vx_samples document folder names)
    file(READ ${document} rest)
    set(found)
    while(rest MATCHES "<!-- sample: ([A-Za-z0-9_.]+) -->\n```[a-z]+\n")
        set(name ${CMAKE_MATCH_1})
        set(head "${CMAKE_MATCH_0}")
        if(name IN_LIST found)
            message(FATAL_ERROR "${document}: two samples are called ${name}")
        endif()
        vx_behind("${rest}" "${head}" rest)
        string(FIND "${rest}" "```\n" end)
        if(end EQUAL -1)
            message(FATAL_ERROR "${document}: the sample ${name} has no end")
        endif()
        string(SUBSTRING "${rest}" 0 ${end} content)
        file(CONFIGURE OUTPUT ${folder}/${name} CONTENT "${content}" @ONLY)
        list(APPEND found ${name})
        vx_behind("${rest}" "${content}" rest)
    endwhile()
    if(NOT found)
        message(FATAL_ERROR "${document} has no samples")
    endif()
    set(${names} ${found} PARENT_SCOPE)
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
    get_filename_component(folder ${FOLDER} ABSOLUTE)
    vx_samples(${DOCUMENT} ${folder} names)
    string(REPLACE ";" "\n" names "${names}")
    execute_process(COMMAND ${CMAKE_COMMAND} -E echo "${names}")
endif()
