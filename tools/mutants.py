"""Changes one line of the program at a time, in copies of the tree, and sees whether a test notices.

Writes what became of each change to build/mutants/report.txt. The last lines name those that no test noticed.
"""

import argparse
import json
import os
import queue
import random
import signal
import subprocess
import sys
import tempfile
import threading
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.dont_write_bytecode = True
import mutations

product = ('app', 'project', 'personas', 'packs', 'questions', 'survey', 'inspect', 'preferences')
home = Path('build/mutants').resolve()
slowSeconds = 5  # A test that takes longer waits until all others have run.
running = set()  # The process groups that are to end with this program.


def run(command, **options):
    """(status, output); the status is None where the time was up. The whole process group ends with the command."""
    timeout = options.pop('timeout', None)
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, errors='replace', start_new_session=True, **options)
    running.add(process.pid)
    try:
        output, _ = process.communicate(timeout=timeout)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        return None, process.communicate()[0]
    finally:
        running.discard(process.pid)


class Test:
    def __init__(self, described, tree):
        properties = {p['name']: p['value'] for p in described.get('properties', [])}
        self.name = described['name']
        self.command = described['command']
        self.folder = properties.get('WORKING_DIRECTORY')
        self.environment = dict(entry.split('=', 1) for entry in properties.get('ENVIRONMENT', []))
        found = next(tree.glob(f'tests/*/{self.name}.cpp'), None)
        self.subject = found.parent.name if found else ''
        self.seconds = 0.0


class Worker:
    """A copy of the tree, and a folder in which it is built."""

    def __init__(self, number, jobs):
        self.tree, self.build, self.jobs = home / str(number) / 'tree', home / str(number) / 'build', jobs
        self.tests = []

    def prepare(self, files):
        for file in files:
            self.write(file, Path(file).read_bytes())
        # Files that are gone could be part of the build.
        for path in [p for p in self.tree.rglob('*') if p.is_file()]:
            if str(path.relative_to(self.tree)) not in files:
                path.unlink()
        status, output = run(['cmake', '-S', self.tree, '-B', self.build, '-G', 'Ninja', '-DCMAKE_BUILD_TYPE=Debug',
                              '-DCMAKE_CXX_FLAGS_DEBUG=-O0 -g0', '-DCMAKE_UNITY_BUILD=ON',
                              '-DCMAKE_UNITY_BUILD_BATCH_SIZE=12',
                              f'-DCMAKE_PROJECT_orrinet_INCLUDE={self.tree}/tools/mutants.cmake'])
        if status != 0 or not self.compiles():
            sys.exit(output + 'The program does not build as it is.')
        _, listed = run(['ctest', '--test-dir', self.build, '--show-only=json-v1'])
        described = json.loads(listed[listed.index('{'):])['tests']
        # What runs no program of the build can't notice a change of it.
        self.tests = [Test(d, self.tree) for d in described if d.get('command', [''])[0].startswith(f'{self.build}/')]

    def write(self, file, content):
        """Leaves a file that is as it should be alone, so that it is not compiled again."""
        path = self.tree / file
        if not path.exists() or path.read_bytes() != content:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
            path.chmod(Path(file).stat().st_mode)

    def compiles(self):
        status, self.output = run(['cmake', '--build', self.build, '-j', str(self.jobs)])
        return status == 0

    def passes(self, test, limit=300.0):
        with tempfile.TemporaryDirectory(prefix='mutant-', ignore_cleanup_errors=True) as folder:
            status, self.output = run(test.command, cwd=test.folder or self.build, timeout=limit,
                                      env=os.environ | test.environment | {'TMPDIR': folder})
        return status == 0

    def verdict(self, mutant, seconds):
        """Which test notices, '' where none does, None where the change does not compile."""
        source = Path(mutant.file).read_text()
        lines = source.split('\n')
        assert lines[mutant.line - 1] == mutant.old
        lines[mutant.line - 1] = mutant.new
        self.write(mutant.file, '\n'.join(lines).encode())
        try:
            if not self.compiles():
                return None
            subject = mutant.file.split('/')[0]
            for test in sorted(self.tests, key=lambda t: (seconds[t.name] > slowSeconds, t.subject != subject,
                                                          seconds[t.name])):
                if not self.passes(test, max(20.0, 5 * seconds[test.name])):
                    return test.name
            return ''
        finally:
            self.write(mutant.file, source.encode())


class Hunt:
    """Takes one change after the other until enough of them have compiled; which ones does not depend on speed."""

    def __init__(self, workers, candidates, wanted, seconds):
        self.workers, self.candidates, self.wanted, self.seconds = workers, iter(candidates), wanted, seconds
        self.compiled = self.underWay = self.skipped = 0
        self.results = []
        self.change = threading.Condition()

    def next(self):
        with self.change:
            self.change.wait_for(lambda: self.compiled >= self.wanted or self.compiled + self.underWay < self.wanted)
            mutant = None if self.compiled >= self.wanted else next(self.candidates, None)
            self.underWay += mutant is not None
            return mutant

    def note(self, mutant, killer, seconds):
        with self.change:
            self.underWay -= 1
            self.compiled += killer is not None
            self.skipped += killer is None
            self.change.notify_all()
            if killer is not None:
                self.results.append((mutant, killer))
                fate = f'killed by {killer}' if killer else 'SURVIVED'
                print(f'{self.compiled:3} {mutant.place}  {fate} ({seconds:.0f} s)\n{lines(mutant)}', flush=True)

    def work(self, worker):
        while mutant := self.next():
            begin = time.monotonic()
            try:
                killer = worker.verdict(mutant, self.seconds)
            except BaseException:
                self.giveUp()
                raise
            self.note(mutant, killer, time.monotonic() - begin)

    def giveUp(self):
        with self.change:
            self.wanted = self.compiled
            self.change.notify_all()

    def run(self):
        with ThreadPoolExecutor(len(self.workers)) as pool:
            list(pool.map(self.work, self.workers))


def lines(mutant):
    return f'      - {mutant.old.strip()}\n      + {mutant.new.strip()}'


def measure(workers):
    """How long each test takes, name by name; ends where one fails as the program is."""
    waiting, seconds, failed = queue.SimpleQueue(), {}, []
    for i in range(len(workers[0].tests)):
        waiting.put(i)

    def work(worker):
        while not waiting.empty():
            try:
                test = worker.tests[waiting.get_nowait()]
            except queue.Empty:
                return
            begin = time.monotonic()
            if not worker.passes(test):
                failed.append(f'{worker.output}\n{test.name} fails without any change.')
            seconds[test.name] = time.monotonic() - begin

    with ThreadPoolExecutor(len(workers)) as pool:
        list(pool.map(work, workers))
    if failed:
        sys.exit('\n'.join(failed))
    return seconds


def report(hunt, seed):
    """Score and survivors, at the end of the list of all."""
    survivors = sorted(mutant.place for mutant, killer in hunt.results if not killer)
    score = len(hunt.results) - len(survivors)
    last = [f'{score} of {len(hunt.results)} killed (seed {seed}; {hunt.skipped} more did not compile)']
    last += [f'survived: {place}' for place in survivors]
    print('\n'.join(last))
    listed = [f'{mutant.place}  {"killed by " + killer if killer else "SURVIVED"}\n{lines(mutant)}'
              for mutant, killer in sorted(hunt.results, key=lambda result: result[0].place)]
    (home / 'report.txt').write_text('\n'.join(listed + last) + '\n')


def candidates(options, files):
    sources = {f: Path(f).read_text() for f in files if f.split('/')[0] in product and f.endswith(('.cpp', '.h'))}
    following = mutations.enumerators(sources.values())
    everything = [m for file, source in sources.items() for m in mutations.mutants(file, source, following)]
    if not options.only:
        return mutations.chosen(everything, options.seed)
    named = [m for m in everything if options.only in (m.place, m.place.rpartition(':')[0])]
    return named or sys.exit(f'There is no change at {options.only}.')


def main():
    parser = argparse.ArgumentParser(prog='./dev mutants', description=__doc__.splitlines()[0])
    parser.add_argument('count', nargs='?', type=int, default=20, help='how many changes (20)')
    parser.add_argument('--seed', type=int, default=random.randrange(10 ** 6), help='repeats a choice')
    parser.add_argument('--only', metavar='FILE:LINE[:K]', help='the changes of one line, or one of them')
    parser.add_argument('-j', dest='workers', type=int, default=int(os.environ.get('ORRINET_JOBS', '2')))
    options = parser.parse_args()

    listed = subprocess.run(['git', '-c', 'safe.directory=*', 'ls-files', '-z'], check=True, capture_output=True)
    files = [f for f in listed.stdout.decode().split('\0') if f and Path(f).is_file()]
    wanted = candidates(options, files)
    count = len(wanted) if options.only else min(options.count, len(wanted))
    print(f'==> seed {options.seed}: {count} of {len(wanted)} lines, {options.workers} at a time', flush=True)
    cores = os.cpu_count() or 1
    workers = [Worker(i, max(1, cores // options.workers)) for i in range(min(options.workers, count))]
    with ThreadPoolExecutor(len(workers)) as pool:
        list(pool.map(lambda worker: worker.prepare(files), workers))
    seconds = measure(workers)
    print(f'==> {len(seconds)} tests take {sum(seconds.values()):.0f} s one by one', flush=True)
    hunt = Hunt(workers, wanted, count, seconds)
    try:
        hunt.run()
    finally:
        report(hunt, options.seed)


def end(*_):
    for group in list(running):
        os.killpg(group, signal.SIGKILL)
    os._exit(130)


signal.signal(signal.SIGINT, end)
signal.signal(signal.SIGTERM, end)
main()
