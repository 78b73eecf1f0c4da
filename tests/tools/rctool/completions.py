"""completions.py FOLDER: the shells can read the completions in a folder, and bash completes
commands, options and values by them. Shells that are not installed are left out."""

import pathlib
import shutil
import subprocess
import sys

folder = pathlib.Path(sys.argv[1]).resolve()


def complete(*words):
    """What bash offers for the last of the words."""
    script = (f'source {folder}/rctool.bash; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
              'compopt() { :; }; _rctool; printf "%s\\n" "${COMPREPLY[@]}"')
    done = subprocess.run(["bash", "-c", script, "bash", *words], check=True, text=True,
                          stdout=subprocess.PIPE, cwd=folder)
    return done.stdout.split()


for shell in ("bash", "zsh", "fish"):
    if shutil.which(shell):
        subprocess.run([shell, "-n", folder / f"rctool.{shell}"], check=True)

assert complete("rctool", "enc") == ["encode"]
assert {"list", "export", "compare", "bench"} <= set(complete("rctool", ""))
assert complete("rctool", "--ver") == ["--version"]
assert complete("rctool", "encode", "--re") == ["--rectangle", "--resize"]
assert complete("rctool", "encode", "--codec", "") == ["ict", "lbe"]
assert complete("rctool", "export", "--chroma", "") == ["420", "444"]
assert complete("rctool", "decode", "--kernels", "s") == ["sse2", "ssse3"]
assert complete("rctool", "encode", "--quality", "") == []
assert complete("rctool", "decode", "-o", "rctool.b") == ["rctool.bash"]
assert complete("rctool", "decode", "rctool.fi") == ["rctool.fish"]
assert complete("rctool", "info", "--codec") == []

zsh = (folder / "rctool.zsh").read_text()
assert zsh.startswith("#compdef rctool\n")
codec = "'--codec[ict or lbe, or ict,lbe for the frames in turn \\[ict\\]]:NAME,...:(ict lbe)'"
assert codec in zsh
fish = (folder / "rctool.fish").read_text()
assert "complete -c rctool -n '__fish_seen_subcommand_from export' -l chroma -x -a '420 444'" in fish
