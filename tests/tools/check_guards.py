"""Fails unless the program, built as users have it, keeps its workers confined and within their memory.

The tests under the sanitizers cannot see that: these take memory of their own, and need calls that are refused otherwise.
"""
import os
import pathlib
import subprocess
import sys
import tempfile
import time

LONG = '<WQFML versionMajor="5"><Bricks/><Meta>' + "<a/>" * 2_000_000 + "</Meta></WQFML>"
SHORT = '<WQFML versionMajor="5"><Meta/><Bricks/></WQFML>'


def children(process):
    try:
        return pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()
    except OSError:
        return []


def faults_of_worker(process):
    lines = pathlib.Path(f"/proc/{process}/status").read_text().splitlines()
    status = dict(line.split(":\t", 1) for line in lines if ":\t" in line)
    if status["NoNewPrivs"] != "1" or status["Seccomp"] != "2":
        yield f"a worker is not confined: NoNewPrivs {status['NoNewPrivs']}, Seccomp {status['Seccomp']}"
    files = [os.readlink(file) for file in pathlib.Path(f"/proc/{process}/fd").iterdir()]
    foreign = [file for file in files if file != "/dev/null" and not file.startswith("socket:")]
    if foreign:
        yield f"a worker has descriptors that are not its own: {foreign}"


def faults(program, folder):
    long, short = folder / "long.wqfml", folder / "short.wqfml"
    long.write_text(LONG)
    short.write_text(SHORT)
    with subprocess.Popen([program, "import", "--jobs", "1", long, long], stdout=subprocess.DEVNULL) as run:
        workers = []
        while not workers and run.poll() is None:
            workers = [worker for spawner in children(run.pid) for worker in children(spawner)]
            time.sleep(0.1)  # in which it confines itself
        yield from faults_of_worker(workers[0]) if workers else ["no worker was seen"]
        run.terminate()
    for others in ([], [short]):
        command = [program, "import", "--memory-limit", "32", long, *others]
        result = subprocess.run(command, capture_output=True, text=True, check=False)
        messages = result.stderr.splitlines()
        if result.returncode != 1 or len(messages) != 1 or "memory" not in messages[0]:
            yield f"a document beyond its memory, and {len(others)} beside it: {result.returncode} {messages}"


def main(program):
    with tempfile.TemporaryDirectory() as folder:
        found = list(faults(program, pathlib.Path(folder)))
    print("\n".join(found) or "workers are confined and keep to their memory")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
