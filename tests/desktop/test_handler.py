"""The handler of Recoll goes on when a worker of its own is killed, and answers for whatever it is asked."""
import os
import pathlib
import signal
import subprocess
import sys
import tempfile

import skip
from documents import write_documents


class Handler:
    def __init__(self, program):
        self.process = subprocess.Popen([program, "handler", "recoll"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def ask(self, path):
        """The page, or None."""
        path = os.fsencode(path)
        self.process.stdin.write(b"filename: %d\n%s\n" % (len(path), path))
        self.process.stdin.flush()
        name, _, count = self.process.stdout.readline().partition(b": ")
        page = self.process.stdout.read(int(count))
        while self.process.stdout.readline() != b"\n":
            pass
        return page if name == b"Document" else None

    def workers(self):
        """The processes that have none below them: the workers, and not what starts them."""
        def below(process):
            children = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text().split()
            return [leaf for child in children for leaf in below(child)] or [process]
        return [int(process) for process in below(self.process.pid) if int(process) != self.process.pid]

    def close(self):
        self.process.stdin.close()
        return self.process.wait(60)


def main(program):
    if not pathlib.Path("/proc/self/task", str(os.getpid()), "children").exists():
        skip.because("the system does not tell which processes belong together")
    faults = []
    with tempfile.TemporaryDirectory() as scratch:
        write_documents(scratch, 40)
        handler = Handler(program)
        good = next(path for path in sorted(pathlib.Path(scratch).glob("*.wqf")) if handler.ask(path))
        page = handler.ask(good)
        for round in range(10):
            killed = handler.workers()
            if not killed:
                faults.append("documents are not read by workers")
                break
            for worker in killed:
                os.kill(worker, signal.SIGKILL)
            # The kill may be seen at the next question only, which it then may cost.
            again = [handler.ask(good), handler.ask(good)]
            if again[1] != page:
                faults.append(f"round {round}: no page after a worker was killed")
        for what, path in [("a name that is not UTF-8", os.path.join(os.fsencode(scratch), b"\xe9.wqf")),
                           ("a folder", scratch), ("nothing", f"{scratch}/gone.wqf"), ("a device", "/dev/zero")]:
            if handler.ask(path) is not None:
                faults.append(f"{what} has a page")
        if handler.close() != 0:
            faults.append("the handler does not end well")
    print("\n".join(faults) or "every question was answered")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
