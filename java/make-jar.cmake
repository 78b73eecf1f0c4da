# Compiles the classes and packs them with the shared object: cmake -D NAME=VALUE... -P make-jar.cmake
#
#   JAVAC, JAR     the JDK's programs
#   SOURCES        folder of the sources, the module's root
#   OBJECT         the shared object
#   OBJCOPY        of binutils: strips the jar's shared object; without it the bytes stay
#   VERSION        of the project
#   FOLDER         for intermediate files; emptied
#   OUTPUT         the jar

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/packing.cmake)

file(REMOVE_RECURSE ${FOLDER})
set(native ${FOLDER}/content/nn/qv/imagedecoder/native/linux-x86_64)
file(MAKE_DIRECTORY ${native})

file(GLOB_RECURSE sources ${SOURCES}/*.java)
run(${JAVAC} --release 17 -encoding UTF-8 -Xlint:all -Werror -proc:none -parameters -g
    -d ${FOLDER}/content ${sources})

get_filename_component(object ${OBJECT} REALPATH)
configure_file(${object} ${native}/libimagedecoder.so COPYONLY)
if(OBJCOPY)
    run(${OBJCOPY} --strip-unneeded --remove-section=.comment ${native}/libimagedecoder.so)
endif()
file(SHA256 ${native}/libimagedecoder.so hash)
file(WRITE ${native}/libimagedecoder.so.sha256 "${hash}\n")

pack_content(
    LINES "Enable-Native-Access: ALL-UNNAMED"
    OPTIONS --main-class nn.qv.imagedecoder.internal.Main --module-version ${VERSION})
