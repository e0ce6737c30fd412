"""How a test leaves off where what it needs is not there."""
import shutil
import sys


def because(reason):
    print("skipped:", reason)
    sys.exit(77)


def unless_installed(*programs):
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        because("not installed: " + ", ".join(missing))
