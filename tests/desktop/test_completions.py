"""The shells complete command lines, each with its own script, as somebody types them."""
import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile

# What is typed, with a tabulator at its end, and the arguments that come of it. FOLDER is a folder with one document.
LINES = [
    ("a command", "imp\t", ["import"]),
    ("a word of an option, behind an equals sign", "import --format=nd\t", ["import", "--format=ndjson"]),
    ("an option", "import --files0\t", ["import", "--files0-from"]),
    ("the file of an option", "import --files0-from FOLDER/ca\t", ["import", "--files0-from", "FOLDER/castle.wqf"]),
    ("a path", "check FOLDER/c\t", ["check", "FOLDER/castle.wqf"]),
    ("a folder only", "import --bundle FOLDER/\t", ["import", "--bundle", "FOLDER/textures"]),
    ("an option of another command", "mend --format\t", ["mend", "--format"]),
    ("the place of a word", "handler kf\t", ["handler", "kfilemetadata"]),
    ("a command to be told of", "help catal\t", ["help", "catalogue"]),
]

SETUP = {
    "bash": ("bash --norc --noprofile -i", "source {scripts}/wqf; bind 'set bell-style none'; PS1="),
    "zsh": ("zsh -f -i", "fpath=({scripts} $fpath); autoload -U compinit; compinit -D -u; unsetopt beep; PS1="),
}


def typed(shell, scripts, folder):
    """The arguments that each line came to, in a terminal."""
    command, setup = SETUP[shell]
    child, terminal = pty.fork()
    if child == 0:
        os.environ.update(TERM="dumb", HOME=str(folder), HISTFILE="", PS1="")
        os.execvp(command.split()[0], command.split())
    lines = [setup.format(scripts=scripts), "wqf() { printf '<%s>' ran \"$@\"; echo; }"]
    lines += ["wqf " + text.replace("FOLDER", str(folder)) for _, text, _ in LINES]
    os.write(terminal, "".join(line + "\n" for line in lines + ["exit"]).encode())
    out = b""
    while True:
        try:
            read = os.read(terminal, 65536)
        except OSError:  # Linux's answer when the other side has gone
            break
        if not read:
            break
        out += read
    os.waitpid(child, 0)
    return [re.findall("<(.*?)>", line)[1:] for line in out.decode().splitlines() if line.startswith("<ran>")]


def asked(scripts, folder):
    """The same from fish, which can be asked: the last word replaced by the one answer."""
    results = []
    for _, text, _ in LINES:
        line = "wqf " + text.rstrip("\t").replace("FOLDER", str(folder))
        out = subprocess.run(["fish", "-N", "-c", f"source {scripts}/wqf.fish; complete -C '{line}'"], check=True,
                             capture_output=True, text=True).stdout
        answers = [answer.split("\t")[0] for answer in out.splitlines()]
        words = line.split()[1:]
        results.append(words[:-1] + answers if len(answers) == 1 else words)
    return results


def parts(words):
    """Without what the shells are free in: an equals sign or a blank, a slash behind a folder."""
    return [part.rstrip("/") for word in words for part in word.split("=") if part]


def main(pages, sources):
    faults, shells = [], [shell for shell in ("bash", "zsh", "fish") if shutil.which(shell)]
    with tempfile.TemporaryDirectory() as scratch:
        scripts, folder = pathlib.Path(scratch, "scripts"), pathlib.Path(scratch, "models")
        subprocess.run([pages, sources, scripts], check=True)
        (folder / "textures").mkdir(parents=True)
        (folder / "castle.wqf").touch()
        for shell in shells:
            results = asked(scripts, folder) if shell == "fish" else typed(shell, scripts, folder)
            for (what, _, wanted), result in zip(LINES, results):
                wanted = [word.replace("FOLDER", str(folder)) for word in wanted]
                if parts(result) != parts(wanted):
                    faults.append(f"{shell}, {what}: {result}, not {wanted}")
            if len(results) != len(LINES):
                faults.append(f"{shell}: only {len(results)} lines")
    print("\n".join(faults) or f"{len(LINES)} lines were completed by {', '.join(shells)}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
