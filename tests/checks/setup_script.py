"""Runs tools/setup with made-up programs: what it says and does when packages are missing.

Usage: setup_script.py ROOT WORK
"""

import pathlib
import re
import shutil
import subprocess
import sys

from steps import require

PROGRAMS = {
    "dpkg-query": "echo not-installed",
    "env": 'while [ "${1#*=}" != "$1" ]; do shift; done; exec "$@"',
    "apt-get": 'echo "apt-get $*" >> "$LOG"',
    "sudo": 'echo sudo >> "$LOG"; exec "$@"',
}


def setup(root, work, user, programs):
    """The status, the errors and the log of a run in which these programs exist."""
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    scripts = {name: PROGRAMS[name] for name in ["dpkg-query", "env", *programs]}
    for name, script in {"id": f"echo {user}", **scripts}.items():
        file = work / name
        file.write_text(f"#!/bin/sh\n{script}\n")
        file.chmod(0o755)
    log = work / "log"
    log.touch()
    step = subprocess.run(["/bin/bash", root / "tools/setup", "one-more"], text=True,
                          env={"PATH": str(work), "LOG": str(log)}, stdout=subprocess.DEVNULL,
                          stderr=subprocess.PIPE)
    return step.returncode, step.stderr, log.read_text()


def check_refusal(name, outcome):
    status, errors, log = outcome
    require(status == 1, f"{name}: status {status}")
    require(log == "", f"{name}: ran {log}")
    advice = re.search(r"apt-get install (.*)", errors)
    require(advice, f"{name}: says {errors}")
    for package in ["g++", "cmake", "openjdk-17-jdk-headless", "valgrind", "one-more"]:
        require(package in advice.group(1).split(), f"{name}: no {package} in {advice.group(0)}")


def check_installation(name, outcome, first_line):
    status, errors, log = outcome
    require(status == 0, f"{name}: status {status}, {errors}")
    require(log.splitlines()[0].startswith(first_line), f"{name}: ran {log}")
    require(re.search(r"^apt-get .*install .*one-more", log, re.MULTILINE), f"{name}: ran {log}")


def main():
    root, work = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])
    check_refusal("a user without sudo", setup(root, work, 1000, ["apt-get"]))
    check_refusal("no apt-get", setup(root, work, 0, ["sudo"]))
    check_installation("root", setup(root, work, 0, ["apt-get"]), "apt-get")
    check_installation("a user with sudo", setup(root, work, 1000, ["apt-get", "sudo"]), "sudo")
    shutil.rmtree(work)


if __name__ == "__main__":
    main()
