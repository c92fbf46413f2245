"""A copy of the tree in which mutants are built and tested.

A mutant may do anything. So it is built and tested with a root directory of its own: all files are read-only but the copy and
an empty /tmp, and there are no processes but its own.
"""
import os
import re
import shutil
import subprocess
import time
from pathlib import Path

BUILD = "build/release"
MEMORY = 8 << 30  # for each process of a test, and an eighth of it for its files
SHARDS = 4  # of a program's tests
OPTIONS = ("-DLMAINTE_UNITY=OFF", "-DLMAINTE_UNITY_TESTS=ON", "-DLMAINTE_BENCH=OFF", "-DLMAINTE_WERROR=OFF")


class Broken(Exception):
    """Without any mutant, something cannot be built or fails."""


def copy_changed(source, tree):
    """Brings the copy up to date. What did not change keeps its time, so that it is not built again."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=source,
                            check=True, capture_output=True).stdout
    names = {os.fsdecode(name) for name in listed.split(b"\0") if name and os.path.lexists(source / os.fsdecode(name))}
    for name in names:
        here, there = source / name, tree / name
        if there.exists() and not here.is_symlink() and here.read_bytes() == there.read_bytes():
            continue
        there.parent.mkdir(parents=True, exist_ok=True)
        there.unlink(missing_ok=True)
        shutil.copy(here, there, follow_symlinks=False)
    for folder, folders, files in os.walk(tree):
        inside = Path(folder).relative_to(tree)
        if inside == Path("."):
            folders[:] = [name for name in folders if name != "build"]
        for name in files:
            if str(inside / name) not in names:
                os.unlink(tree / inside / name)


def nearest_tests(tree, file, program):
    """The tests of a file's subject, as a filter of a program's tests: they come first, for they notice most."""
    subject = Path(file).stem.removeprefix("verb_")
    for name in (subject, subject.split("_")[0]):
        tests = tree / Path(program).parent / f"test_{name}.cpp"
        if tests.exists():
            suites = dict.fromkeys(re.findall(r"^TEST\w*\((\w+),", tests.read_text(), re.MULTILINE))
            return [":".join(f"{suite}.*:*/{suite}.*" for suite in suites)]
    return []


def first_failure(processes, limit=None):
    """Waits for processes. The first exit status that is not zero ends them all; None where they take longer than a limit."""
    end = time.monotonic() + limit if limit else None
    running = list(processes)
    try:
        while running:
            try:
                status = running[0].wait(0.05)
            except subprocess.TimeoutExpired:
                status = next((status for status in map(subprocess.Popen.poll, running) if status), None)
                if status is None:
                    if end and time.monotonic() > end:
                        return None
                    continue
            if status:
                return status
            running.pop(0)
        return 0
    finally:
        for process in processes:
            process.kill()
            process.wait()


class Bench:
    """A copy, seen at one place by all that is built in it."""

    def __init__(self, tree, copy, limits, build_jobs=1):
        self.tree, self.copy, self.limits, self.build_jobs = tree, copy, limits, build_jobs
        self.log = tree.parent / (copy.name + ".log")

    def start(self, words, log, **environment):
        """A process that runs a command in the copy."""
        root = ["bwrap", "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc", "--size", str(MEMORY // 8), "--tmpfs", "/tmp",
                "--bind", self.copy, self.tree, "--unshare-pid", "--die-with-parent", "--new-session", "--chdir", self.tree]
        if os.geteuid() == 0:
            root += ["--cap-add", "ALL"]
        environment = {**os.environ, "CCACHE_DISABLE": "1", **environment}
        environment.pop("TMPDIR", None)
        # What a shell starts in the background ignores signals; tests wait for what they do.
        whole = [*root, "--", "env", "--default-signal", *words]
        return subprocess.Popen(whole, env=environment, stdin=subprocess.DEVNULL, stdout=log, stderr=log)

    def run(self, words, limit=None):
        """The exit status of a command in the copy; None where it takes longer than its limit."""
        with open(self.log, "wb") as log:
            return first_failure([self.start(words, log)], limit)

    def build(self, *programs):
        return self.run(["ninja", "-C", BUILD, "-j", str(self.build_jobs), *programs], limit=3600) == 0

    def test(self, program, tests="*"):
        """Runs tests of a program. They mostly wait, so several of them run at once."""
        words = ["prlimit", f"--as={MEMORY}", f"{BUILD}/{program}", "--gtest_fail_fast", "--gtest_brief=1",
                 f"--gtest_filter={tests}"]
        with open(self.log, "wb") as log:
            return first_failure([self.start(words, log, GTEST_TOTAL_SHARDS=str(SHARDS), GTEST_SHARD_INDEX=str(index))
                                  for index in range(SHARDS)], self.limits.get(program))

    def prepare(self, programs):
        """Builds the programs and runs their tests. A mutant may take five times as long as they do."""
        if not self.build(*programs):
            raise Broken(f"the build fails without a mutant; see {self.log}")
        for program in programs:
            start = time.monotonic()
            if self.test(program) != 0:
                raise Broken(f"{program} fails without a mutant; see {self.log}")
            self.limits[program] = 5 + 5 * (time.monotonic() - start)

    def judge(self, mutant, programs):
        """What becomes of a mutant, in a word."""
        file = self.copy / mutant.file
        text = file.read_text()
        lines = text.split("\n")
        lines[mutant.number - 1] = mutant.new
        try:
            file.write_text("\n".join(lines))
            for program in programs:
                if not self.build(program):
                    return "refused"
                for tests in (*nearest_tests(self.tree, mutant.file, program), "*"):
                    status = self.test(program, tests)
                    if status != 0:
                        return "hung" if status is None else "killed"
            return "survived"
        finally:
            file.write_text(text)


def configure(tree):
    """Lets CMake describe the build of the copy, as ./dev build does."""
    command = 'source scripts/lib.sh; configure release "$@"'
    if subprocess.run(["bash", "-c", command, "bash", *OPTIONS], cwd=tree).returncode != 0:
        raise Broken("the copy cannot be configured")


def benches(tree, count, limits):
    """The copy itself, and more of them; the programs are built in all of them."""
    made = [Bench(tree, tree, limits)]
    for number in range(2, count + 1):
        copy = tree.parent / f"{tree.name}-{number}"
        shutil.rmtree(copy, ignore_errors=True)
        subprocess.run(["cp", "-a", "--reflink=auto", tree, copy], check=True)
        made.append(Bench(tree, copy, limits))
    return made
