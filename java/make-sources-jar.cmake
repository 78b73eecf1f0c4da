# Packs the sources, for a viewer's developer to step into: cmake -D NAME=VALUE... -P make-sources-jar.cmake
#
#   JAR            the JDK's program
#   SOURCES        folder of the sources, the module's root
#   VERSION        of the project
#   FOLDER         for intermediate files; emptied
#   OUTPUT         the jar

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/packing.cmake)

file(REMOVE_RECURSE ${FOLDER})
file(COPY ${SOURCES}/ DESTINATION ${FOLDER}/content)
pack_content()
