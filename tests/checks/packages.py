"""Makes the Debian packages of a build, lets lintian check them, installs them into a folder that plays
the root of a system, and decodes a recording with what was installed.

Usage: packages.py --source ROOT --build FOLDER --cmake PROGRAM --work FOLDER --java PROGRAM FRAME...
The recording is made of the frames.
"""

import argparse
import pathlib
import shutil

from links import broken_links
from steps import output_of, require

PACKAGES = {"libimagedecoder-jni", "libimagedecoder-java", "imagedecoder-tools", "imagedecoder-doc"}
JNI_FOLDERS = "usr/lib/*/jni"


def make_packages(root, build, folder):
    """Runs debian/rules on the build that is there; dh takes it as done for the packages in the stamp."""
    source = folder / "source"
    shutil.copytree(root / "debian", source / "debian")
    (source / "debian/debhelper-build-stamp").write_text("\n".join(sorted(PACKAGES)))
    output_of(source / "debian/rules", "binary", f"BUILD={build}", cwd=source)
    packages = {package_field(file, "Package"): file for file in folder.glob("*.deb")}
    made = {name for name in packages if not name.endswith("-dbgsym")}
    require(made == PACKAGES, f"made {sorted(packages)}")
    return packages


def check_policy(packages):
    output_of("lintian", "--fail-on", "error", "--tag-display-limit", "0", *packages.values())


def check_maintainer(root, packages):
    """One place names the maintainer; no package names a page while none is known."""
    control = (root / "debian/control").read_text()
    for name, file in packages.items():
        maintainer = package_field(file, "Maintainer")
        require(f"Maintainer: {maintainer}\n" in control, f"{name} is maintained by {maintainer}")
        homepage = package_field(file, "Homepage")
        require(not homepage or f"\nHomepage: {homepage}\n" in control, f"{name} is at {homepage}")


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


def check_debug_symbols(cmake, build, library, folder):
    """Without debhelper, which makes packages of them: a build that has split them off installs them."""
    output_of(cmake, "--install", build, "--prefix", folder, "--component", "debug")
    notes = output_of("readelf", "--notes", library)
    build_id = notes.split("Build ID: ")[1].split()[0]
    symbols = folder / "lib/debug/.build-id" / build_id[:2] / f"{build_id[2:]}.debug"
    require(symbols.is_file(), f"no debug symbols at {symbols}")


def check_documents(root):
    pages = root / "usr/share/doc/imagedecoder"
    require((pages / "README.md").is_file(), "no README.md")
    broken = list(broken_links(pages))
    require(not broken, "\n".join(broken))
    require((root / "usr/share/man/man1/rctool.1.gz").is_file(), "rctool has no manual page")


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
    parser.add_argument("--source", type=pathlib.Path, required=True)
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--cmake", required=True)
    parser.add_argument("--work", type=pathlib.Path, required=True)
    parser.add_argument("--java", required=True)
    parser.add_argument("frames", nargs="+")
    arguments = parser.parse_args()

    shutil.rmtree(arguments.work, ignore_errors=True)
    root = arguments.work / "root"
    packages = make_packages(arguments.source, arguments.build, arguments.work / "packages")
    check_policy(packages)
    check_maintainer(arguments.source, packages)
    check_dependencies(packages)
    install(packages, root)
    check_documents(root)
    libraries = list(root.glob(f"{JNI_FOLDERS}/libimagedecoder.so"))
    require(len(libraries) == 1, f"installed as {libraries}")
    check_debug_symbols(arguments.cmake, arguments.build, libraries[0], arguments.work / "debug")
    for completion in ("bash-completion/completions/rctool", "zsh/vendor-completions/_rctool",
                       "fish/vendor_completions.d/rctool.fish"):
        require((root / "usr/share" / completion).is_file(), f"there is no {completion}")
    decode(root, libraries[0], arguments.java, arguments.frames,
           arguments.work / "frames.rcrec")
    shutil.rmtree(arguments.work)


if __name__ == "__main__":
    main()
