"""Makes the Debian packages, installs them into a folder that plays the root of a system, and decodes
a recording with what was installed.

Usage: packages.py --cpack PROGRAM --config FILE --work FOLDER --java PROGRAM FRAME...
The recording is made of the frames.
"""

import argparse
import pathlib
import shutil
import subprocess
import sys

PACKAGES = {"libimagedecoder-jni", "libimagedecoder-jni-dbgsym", "libimagedecoder-java",
            "imagedecoder-tools"}
JNI_FOLDERS = "usr/lib/*/jni"


def output_of(*command):
    """Runs a step; it ends the test if it fails."""
    step = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if step.returncode:
        sys.exit(f"{' '.join(map(str, command))}\n{step.stdout}status {step.returncode}")
    return step.stdout


def require(condition, text):
    if not condition:
        sys.exit(text)


def make_packages(cpack, config, folder):
    output_of(cpack, "-G", "DEB", "--config", config, "-B", folder)
    packages = {package_field(file, "Package"): file for file in folder.glob("*.deb")}
    require(packages.keys() == PACKAGES, f"made {sorted(packages)}")
    return packages


def package_field(file, field):
    return output_of("dpkg-deb", "--field", file, field).strip()


def check_dependencies(packages):
    """What dpkg-shlibdeps finds is more than a guess of ours: it knows the system's libraries."""
    library = {name.split()[0]: name for name in
               package_field(packages["libimagedecoder-jni"], "Depends").split(", ")}
    require(library.keys() == {"libc6", "libgcc-s1"}, f"the library depends on {library}")
    require(library["libc6"] == "libc6 (>= 2.17)", f"the library wants {library['libc6']}")
    java = package_field(packages["libimagedecoder-java"], "Depends")
    version = package_field(packages["libimagedecoder-jni"], "Version")
    require(f"libimagedecoder-jni (= {version})" in java, f"the classes depend on {java}")


def install(packages, root):
    """As dpkg does on a system, but for what the packages depend on."""
    database = root / "var/lib/dpkg"
    (database / "info").mkdir(parents=True)
    (database / "updates").mkdir()
    (database / "status").touch()
    output_of("dpkg", f"--root={root}", "--force-not-root", "--force-bad-path", "--force-depends",
              "--install", *packages.values())
    for name in packages:
        status = output_of("dpkg-query", f"--admindir={database}", "--show",
                           "--showformat=${db:Status-Abbrev}", name)
        require(status.strip() == "ii", f"{name} is {status}")


def check_debug_symbols(root, library):
    notes = output_of("readelf", "--notes", library)
    build_id = notes.split("Build ID: ")[1].split()[0]
    symbols = root / "usr/lib/debug/.build-id" / build_id[:2] / f"{build_id[2:]}.debug"
    require(symbols.is_file(), f"no debug symbols at {symbols}")


def decode(root, library, java, frames, recording):
    tool = root / "usr/bin/rctool"
    output_of(tool, "encode", "--codec", "ict", "--output", recording, *frames)
    output_of(tool, "decode", "--verify", recording)

    jvm = ["env", f"LD_LIBRARY_PATH={library.parent}", java,
           "-jar", root / "usr/share/java/imagedecoder.jar"]
    # Not the shared object that the jar brings along for a viewer without packages.
    origin = output_of(*jvm, "version")
    require("System.loadLibrary" in origin, f"not the installed library: {origin}")
    output_of(*jvm, "replay", recording)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--cpack", required=True)
    parser.add_argument("--config", required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    parser.add_argument("--java", required=True)
    parser.add_argument("frames", nargs="+")
    arguments = parser.parse_args()

    shutil.rmtree(arguments.work, ignore_errors=True)
    root = arguments.work / "root"
    packages = make_packages(arguments.cpack, arguments.config, arguments.work / "packages")
    check_dependencies(packages)
    install(packages, root)
    libraries = list(root.glob(f"{JNI_FOLDERS}/libimagedecoder.so"))
    require(len(libraries) == 1, f"installed as {libraries}")
    check_debug_symbols(root, libraries[0])
    require((root / "usr/share/man/man1/rctool.1").is_file(), "rctool has no manual page")
    for completion in ("bash-completion/completions/rctool", "zsh/vendor-completions/_rctool",
                       "fish/vendor_completions.d/rctool.fish"):
        require((root / "usr/share" / completion).is_file(), f"there is no {completion}")
    decode(root, libraries[0], arguments.java, arguments.frames,
           arguments.work / "frames.rcrec")
    shutil.rmtree(arguments.work)


if __name__ == "__main__":
    main()
