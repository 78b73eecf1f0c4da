"""Configures the project in ways that users need, and checks what comes of it. Nothing is compiled.

Usage: configuration.py --list
       configuration.py --source ROOT --cmake PROGRAM --work FOLDER --object SHARED_OBJECT CHECK
"""

import argparse
import json
import os
import pathlib
import shutil
import subprocess
import sys

from steps import output_of, require

# What find_package looks for: the project's name of it, its Debian packages, the switch without it.
DEPENDENCIES = {
    "JNI": ("jni.h", ["openjdk-17-jdk-headless"], "IMAGEDECODER_JNI=OFF"),
    "Java": ("JDK 17", ["openjdk-17-jdk-headless"], "IMAGEDECODER_JAVA=OFF"),
    "PNG": ("libpng", ["libpng-dev"], "IMAGEDECODER_TOOLS=OFF"),
    "CLI11": ("CLI11", ["libcli11-dev"], "IMAGEDECODER_TOOLS=OFF"),
    "nlohmann_json": ("JSON for Modern C++", ["nlohmann-json3-dev"], "IMAGEDECODER_TOOLS=OFF"),
    "ZLIB": ("zlib", ["zlib1g-dev"], "IMAGEDECODER_TESTS=OFF"),
    "GTest": ("GoogleTest", ["libgtest-dev", "libgmock-dev"], "IMAGEDECODER_TESTS=OFF"),
    "JPEG": ("libjpeg", ["libjpeg-dev"], "IMAGEDECODER_TESTS=OFF"),
    "Python3": ("Python 3", ["python3"], "IMAGEDECODER_TESTS=OFF"),
    "benchmark": ("Google Benchmark", ["libbenchmark-dev"], "IMAGEDECODER_BENCH=OFF"),
}
ONLY_LIBRARY = ["-DIMAGEDECODER_JAVA=OFF", "-DIMAGEDECODER_TOOLS=OFF", "-DIMAGEDECODER_TESTS=OFF",
                "-DIMAGEDECODER_BENCH=OFF"]


def without(packages):
    return [f"-DCMAKE_DISABLE_FIND_PACKAGE_{package}=ON" for package in packages]


def configure(arguments, *options):
    output_of(arguments.cmake, "-S", arguments.source, "-B", arguments.work, "-G", "Ninja", *options)


def compiled_files(arguments):
    database = json.loads((arguments.work / "compile_commands.json").read_text())
    return {str(pathlib.Path(entry["file"]).relative_to(arguments.source)): entry["command"]
            for entry in database if entry["file"].startswith(f"{arguments.source}/")}


def InstallsIntoARelativeLibraryFolder(arguments):
    """As debhelper asks for it: without a type."""
    configure(arguments, "-DCMAKE_INSTALL_LIBDIR=lib/of-the-packager", *ONLY_LIBRARY)
    shutil.copy(arguments.object, arguments.work)
    root = arguments.work / "root"
    output_of(arguments.cmake, "--install", arguments.work, "--prefix", "/usr", "--component", "library",
              env=os.environ | {"DESTDIR": str(root)})
    installed = [str(file.relative_to(root)) for file in root.rglob("*") if file.is_file()]
    require(installed == ["usr/lib/of-the-packager/jni/libimagedecoder.so"], f"installed {installed}")


def ListsAllThatIsMissingWithPackageAndSwitch(arguments):
    step = subprocess.run([arguments.cmake, "-S", arguments.source, "-B", arguments.work, "-G", "Ninja",
                           *without(DEPENDENCIES)], stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE, text=True)
    require(step.returncode, "configured without anything")
    lines = step.stderr.splitlines()
    for name, debian, switch in DEPENDENCIES.values():
        of_name = [line for line in lines if line.strip().startswith(name) or f"({name})" in line]
        require(len(of_name) == 1, f"{name} is in the lines {of_name} of\n{step.stderr}")
        for part in [*debian, switch]:
            require(part in of_name[0], f"no {part} in '{of_name[0]}'")


def ConfiguresWithTheSwitchesThatItNames(arguments):
    switches = {f"-D{switch}" for _, _, switch in DEPENDENCIES.values()}
    configure(arguments, *switches, *without(DEPENDENCIES))


def BuildsToolsAndTestsWithoutAJdk(arguments):
    configure(arguments, "-DIMAGEDECODER_JNI=OFF", *without(["JNI", "Java"]))
    compiled = compiled_files(arguments)
    require("tools/rctool/main.cpp" in compiled, "rctool is not built")
    require("tests/libimagedecoder/RendererTest.cpp" in compiled, "the library is not tested")
    needs_jdk = [file for file, command in compiled.items()
                 if file.startswith(("jni/", "libjni/")) or "/jvm/" in command]
    require(not needs_jdk, f"these need a JDK: {needs_jdk}")


def LeavesTestsAndSplitSymbolsOutForPackagers(arguments):
    output_of(arguments.cmake, "--preset", "packager", "-B", arguments.work, cwd=arguments.source)
    compiled = compiled_files(arguments)
    require("jni/Library.cpp" in compiled and "tools/rctool/main.cpp" in compiled, "not all is built")
    require(" -g " in compiled["jni/Library.cpp"], "the shared object has no debug symbols")
    needless = [file for file in compiled if file.startswith(("tests/", "fuzz/", "bench/"))]
    require(not needless, f"builds {needless}")
    require("--only-keep-debug" not in (arguments.work / "build.ninja").read_text(),
            "splits the debug symbols off")


CHECKS = [InstallsIntoARelativeLibraryFolder, ListsAllThatIsMissingWithPackageAndSwitch,
          ConfiguresWithTheSwitchesThatItNames, BuildsToolsAndTestsWithoutAJdk,
          LeavesTestsAndSplitSymbolsOutForPackagers]


def main():
    if sys.argv[1:] == ["--list"]:
        print("\n".join(check.__name__ for check in CHECKS))
        return
    parser = argparse.ArgumentParser()
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    parser.add_argument("--object", type=pathlib.Path, required=True)
    parser.add_argument("check")
    arguments = parser.parse_args()

    shutil.rmtree(arguments.work, ignore_errors=True)
    next(check for check in CHECKS if check.__name__ == arguments.check)(arguments)
    shutil.rmtree(arguments.work)


if __name__ == "__main__":
    main()
