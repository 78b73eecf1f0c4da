# What the scripts that make jars share. They set JAR, the JDK's program; FOLDER, for intermediate
# files; VERSION, of the project; and OUTPUT, the jar.
#
# The same content gives the same bytes wherever it lies: entries are sorted, and dated by
# SOURCE_DATE_EPOCH or, without it, always the same.

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${FOLDER}/content
                    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# pack_content(LINES line... [OPTIONS option...]): packs FOLDER/content; the manifest gets the lines
# besides title and version, jar the options.
function(pack_content)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "" "LINES;OPTIONS")
    list(JOIN arg_LINES "\n" lines)
    file(WRITE ${FOLDER}/manifest
        "Implementation-Title: imagedecoder\n"
        "Implementation-Version: ${VERSION}\n"
        "${lines}\n")

    set(date 2000-01-01T00:00:00Z)
    if(DEFINED ENV{SOURCE_DATE_EPOCH})
        string(TIMESTAMP date %Y-%m-%dT%H:%M:%SZ UTC)
    endif()

    file(GLOB_RECURSE entries RELATIVE ${FOLDER}/content ${FOLDER}/content/*)
    list(SORT entries)
    list(JOIN entries "\n" entries)
    file(WRITE ${FOLDER}/entries ${entries})
    run(${JAR} --create --file ${OUTPUT} --manifest ${FOLDER}/manifest --date ${date}
        ${arg_OPTIONS} @${FOLDER}/entries)
endfunction()
