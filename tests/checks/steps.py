"""What the checks that run programs share."""

import subprocess
import sys


def output_of(*command, **options):
    """Runs a step and returns what it printed; a step that fails ends the test."""
    step = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          **options)
    if step.returncode:
        sys.exit(f"{' '.join(map(str, command))}\n{step.stdout}status {step.returncode}")
    return step.stdout


def require(condition, text):
    if not condition:
        sys.exit(text)
