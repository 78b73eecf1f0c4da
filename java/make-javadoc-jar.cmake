# Makes the Javadoc and packs it: cmake -D NAME=VALUE... -P make-javadoc-jar.cmake
# Fails if a public declaration lacks a part of its comment.
#
#   JAVADOC, JAR   the JDK's programs
#   SOURCES        folder of the sources, the module's root
#   VERSION        of the project
#   FOLDER         for intermediate files; emptied. The pages lie in content/.
#   OUTPUT         the jar

cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/packing.cmake)

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER}/content)
run(${JAVADOC} -J-Duser.language=en -quiet -Xdoclint:all -Werror --release 17 -notimestamp
    -encoding UTF-8 -docencoding UTF-8 -charset UTF-8
    -windowtitle "imagedecoder ${VERSION}" -doctitle "imagedecoder ${VERSION}"
    -d ${FOLDER}/content --module-source-path nn.qv.imagedecoder=${SOURCES}
    --module nn.qv.imagedecoder)
pack_content()
