"""Finds the program mapexport and runs it as a child process."""

import json
import os
import re
import shutil
import subprocess
import weakref
from dataclasses import dataclass, field
from pathlib import Path

from .errors import ExportError

OLDEST = (1, 1, 0)

_DONE, _CANCELLED, _DONE_WITH_LONG_LISTS = 0, 3, 4
_SECONDS_TO_END = 5
_LONGEST_QUOTE = 200


@dataclass(frozen=True)
class Message:
    """A line of the program; docs/report.md lists the codes."""

    severity: str
    code: str
    text: str
    nodes: list[str] = field(default_factory=list)


def find_program(preferred: str) -> str:
    """The path from the preferences, else the program beside the add-on or on PATH."""
    if preferred:
        if not os.access(preferred, os.X_OK) or os.path.isdir(preferred):
            raise ExportError(
                f"the program \"{preferred}\", which the add-on's preferences name, can't be run"
            )
        return preferred
    here = Path(__file__).resolve().parent
    beside = os.pathsep.join(map(str, (here, here / "bin", here.parent)))
    found = shutil.which("mapexport", path=beside) or shutil.which("mapexport")
    if found is None:
        raise ExportError(
            "the program mapexport is not found: install it, or name it in the add-on's preferences"
        )
    return found


def check_program(program: str) -> None:
    try:
        answer = subprocess.run(
            [program, "--version"],
            stdin=subprocess.DEVNULL,
            capture_output=True,
            check=False,
            encoding="utf-8",
            errors="replace",
            timeout=60,
        )
    except (OSError, subprocess.SubprocessError) as error:
        raise ExportError(f'the program "{program}" can\'t be run: {error}') from error
    found = re.match(r"mapexport (\d+)\.(\d+)\.(\d+)", answer.stdout)
    if found is None:
        said = " ".join((answer.stdout + answer.stderr).split())[:_LONGEST_QUOTE] or "nothing"
        raise ExportError(f'the program "{program}" is not mapexport: it says {said}')
    if tuple(map(int, found.groups())) < OLDEST:
        raise _too_old(program)


def _too_old(program: str) -> ExportError:
    oldest = ".".join(map(str, OLDEST))
    return ExportError(
        f'the program "{program}" is too old: this add-on needs mapexport {oldest} or later'
    )


class Run:
    """A run of the program."""

    def __init__(self, program: str, arguments: list[str], folder: str) -> None:
        """Starts it in `folder`, where it may leave files."""
        self._program = program
        self._said = os.path.join(folder, "messages")
        try:
            with open(self._said, "wb") as said:
                self._child = subprocess.Popen(
                    [program, *arguments],
                    cwd=folder,
                    stdin=subprocess.DEVNULL,
                    stdout=subprocess.DEVNULL,
                    stderr=said,
                )
        except OSError as error:
            raise ExportError(f'the program "{program}" can\'t be run: {error}') from error
        # Also when Blender drops the run without a word, because the add-on is disabled.
        self._end = weakref.finalize(self, _end, self._child)

    def has_ended(self) -> bool:
        return self._child.poll() is not None

    def wait(self) -> None:
        self._child.wait()

    def stop(self) -> None:
        """Ends the program; an older output stays as it was."""
        self._end()

    def messages(self) -> list[Message]:
        """What it said, once it has ended."""
        lines = Path(self._said).read_text("utf-8", "replace").splitlines()
        return [_message(line) for line in lines if line.strip()]

    def failure(self, messages: list[Message]) -> str | None:
        """Why there is no new output; None where there is one."""
        status = self._child.returncode
        if status in (_DONE, _DONE_WITH_LONG_LISTS):
            return None
        if status == _CANCELLED:
            return "the export was cancelled"
        if status < 0:
            return f"mapexport was ended by signal {-status}"
        errors = [one for one in messages if one.severity == "error"]
        if any(not one.code for one in errors) and "--messages" in errors[0].text:
            return str(_too_old(self._program))
        return errors[-1].text if errors else f"mapexport ended with status {status}"


def _end(child: "subprocess.Popen[bytes]") -> None:
    if child.poll() is not None:
        return
    child.terminate()
    try:
        child.wait(_SECONDS_TO_END)
    except subprocess.TimeoutExpired:
        child.kill()
        child.wait()


def _message(line: str) -> Message:
    try:
        said = json.loads(line)
        words = [said[name] for name in ("severity", "code", "text")]
        scene, nodes = said.get("scene", ""), list(said.get("nodes", []))
    except (ValueError, KeyError, TypeError, AttributeError):
        return Message("error", "", line)
    if not all(isinstance(word, str) for word in (*words, scene, *nodes)):
        return Message("error", "", line)
    severity, code, text = words
    if scene:  # the file is the add-on's own
        text = text.removeprefix(f"{scene}: ")
    return Message(severity, code, text, nodes)
