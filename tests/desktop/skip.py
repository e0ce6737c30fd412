"""How a test leaves off where a program that it needs is not installed."""
import shutil
import sys


def unless_installed(*programs):
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        print("skipped, not installed:", ", ".join(missing))
        sys.exit(77)
