# Compiles the classes and packs them with the shared object: cmake -D NAME=VALUE... -P make-jar.cmake
#
#   JAVAC, JAR     the JDK's programs
#   SOURCES        folder of the sources, the module's root
#   OBJECT         the shared object
#   VERSION        of the project
#   FOLDER         for intermediate files; emptied
#   OUTPUT         the jar
#
# The same sources and compilers give the same bytes wherever they lie: entries are sorted, and dated
# by SOURCE_DATE_EPOCH or, without it, always the same.

cmake_minimum_required(VERSION 3.25)

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${FOLDER}/content
                    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${FOLDER})
set(native ${FOLDER}/content/nn/qv/imagedecoder/native/linux-x86_64)
file(MAKE_DIRECTORY ${native})

file(GLOB_RECURSE sources ${SOURCES}/*.java)
run(${JAVAC} --release 17 -encoding UTF-8 -Xlint:all -Werror -proc:none -parameters -g
    -d ${FOLDER}/content ${sources})

get_filename_component(object ${OBJECT} REALPATH)
configure_file(${object} ${native}/libimagedecoder.so COPYONLY)
file(SHA256 ${native}/libimagedecoder.so hash)
file(WRITE ${native}/libimagedecoder.so.sha256 "${hash}\n")

file(WRITE ${FOLDER}/manifest
    "Implementation-Title: imagedecoder\n"
    "Implementation-Version: ${VERSION}\n"
    "Enable-Native-Access: ALL-UNNAMED\n")

set(date 2000-01-01T00:00:00Z)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    string(TIMESTAMP date %Y-%m-%dT%H:%M:%SZ UTC)
endif()

file(GLOB_RECURSE entries RELATIVE ${FOLDER}/content ${FOLDER}/content/*)
list(SORT entries)
list(JOIN entries "\n" entries)
file(WRITE ${FOLDER}/entries ${entries})
run(${JAR} --create --file ${OUTPUT} --manifest ${FOLDER}/manifest --date ${date}
    --main-class nn.qv.imagedecoder.internal.Main --module-version ${VERSION} @${FOLDER}/entries)
