"""Holds the lists of Debian packages to each other: tools/setup installs what cmake/Dependencies.cmake
and debian/control name, and docs/packaging.md lists what cmake/Dependencies.cmake names.

Usage: dependencies.py ROOT
"""

import pathlib
import re
import sys

from steps import require

NEED = re.compile(r'^need\("([^"]+)".*?DEBIAN ([^)]+?)\s+FIND', re.MULTILINE | re.DOTALL)


def main():
    root = pathlib.Path(sys.argv[1])
    needed = NEED.findall((root / "cmake/Dependencies.cmake").read_text())
    require(len(needed) >= 10, f"found only {needed}")
    setup = re.search(r"packages=\((.*?)\n\)", (root / "tools/setup").read_text(), re.DOTALL)
    installed = set(re.sub(r"#.*", "", setup.group(1)).split())
    document = (root / "docs/packaging.md").read_text()
    for name, packages in needed:
        for package in packages.split():
            require(package in installed, f"tools/setup does not install {package}")
            require(re.search(rf"^\| {re.escape(name)} \|.*`{re.escape(package)}`", document,
                              re.MULTILINE),
                    f"docs/packaging.md has no line with {name} and {package}")

    control = (root / "debian/control").read_text()
    for line in re.search(r"Build-Depends:\n((?: .*\n)+)", control).group(1).splitlines():
        package = line.split()[0].rstrip(",").replace("debhelper-compat", "debhelper")
        require(package in installed, f"tools/setup does not install {package}")


if __name__ == "__main__":
    main()
