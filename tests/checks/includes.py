"""Holds the includes of each source folder against the folders it may know.

Usage: includes.py ROOT
"""

import pathlib
import re
import sys

# Folder -> the project's folders that it may include from, and whether it may see the JVM.
KNOWS = {
    "libthread": (["libthread"], False),
    "libjni": (["libjni"], True),
    "libimagedecoder": (["libimagedecoder", "libthread"], False),
    "jni": (["jni", "libimagedecoder", "libjni"], True),
}
JVM_HEADERS = {"jni.h", "jni_md.h", "jvmti.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s*(.*)$', re.MULTILINE)
NAMED = re.compile(r'["<]([^">]+)[">]')


def objection(root, included, quoted, folders, sees_jvm):
    """Why the include is not allowed, or None."""
    if included in JVM_HEADERS:
        return None if sees_jvm else "must not see the JVM"
    if not quoted and not (root / included).exists():
        return None
    if ".." in pathlib.PurePosixPath(included).parts or not (root / included).is_file():
        return "is not a path from the project root"
    if included.split("/")[0] not in folders:
        return "is in a folder that this one must not know"
    return None


def objections_to(root, path, folders, sees_jvm):
    for argument in INCLUDE.findall(path.read_text()):
        named = NAMED.match(argument)
        if not named:
            yield f"{argument} does not name a file"
            continue
        why = objection(root, named[1], argument[0] == '"', folders, sees_jvm)
        if why:
            yield f"{named[0]} {why}"


def main(root):
    failed = False
    for folder, (folders, sees_jvm) in KNOWS.items():
        sources = [path for path in sorted((root / folder).rglob("*"))
                   if path.suffix in (".h", ".cpp")]
        if not sources:
            print(f"{folder}: no sources found")
            failed = True
        for path in sources:
            for text in objections_to(root, path, folders, sees_jvm):
                print(f"{path.relative_to(root)}: {text}")
                failed = True
    return failed


if __name__ == "__main__":
    sys.exit(main(pathlib.Path(sys.argv[1])))
