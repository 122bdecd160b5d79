#!/usr/bin/env python3
"""Holds orrinet-study against the programs of others: see tools/proof."""

import argparse
import json
import math
import sqlite3
import subprocess
import sys
from pathlib import Path

home = Path(__file__).resolve().parents[2]
flawed = home / 'examples' / 'flawed.ormt'
humans = home / 'examples' / 'flawed-humans.csv'
expected = home / 'tests' / 'study' / 'expected' / 'statistics.json'


def plain(value):
    """Without NumPy's types, and with nothing in place of what is not a number."""
    if isinstance(value, dict):
        return {str(key): plain(entry) for key, entry in value.items()}
    if isinstance(value, (list, tuple)):
        return [plain(entry) for entry in value]
    if hasattr(value, 'item'):
        value = value.item()
    return None if isinstance(value, float) and not math.isfinite(value) else value


def same(one, other):
    """The same but for rounding."""
    if isinstance(one, dict) and isinstance(other, dict):
        return one.keys() == other.keys() and all(same(one[key], other[key]) for key in one)
    if isinstance(one, list) and isinstance(other, list):
        return len(one) == len(other) and all(map(same, one, other))
    if isinstance(one, (int, float)) and isinstance(other, (int, float)):
        return math.isclose(one, other, rel_tol=1e-12, abs_tol=1e-12)
    return one == other


def lines(value):
    """JSON with a line for each entry of the first two levels, so that a change of one is a change of a line."""
    def entry(inner):
        return json.dumps(inner, ensure_ascii=False)

    blocks = []
    for key, block in value.items():
        inner = ',\n'.join(f'    {entry(name)}: {entry(one)}' for name, one in block.items())
        blocks.append(f'  {entry(key)}: {{\n{inner}\n  }}')
    return '{\n' + ',\n'.join(blocks) + '\n}\n'


def rows(path):
    file = sqlite3.connect(f'file:{path}?mode=ro', uri=True)
    tables = [row[0] for row in file.execute("SELECT name FROM sqlite_schema WHERE type = 'table' ORDER BY name")]
    return {table: file.execute(f'SELECT * FROM "{table}"').fetchall() for table in tables}


def example(options):
    made = options.output / 'flawed.ormt'
    subprocess.run([sys.executable, '-B', home / 'examples' / 'makeflawed.py', made], check=True)
    return [] if rows(made) == rows(flawed) else ['examples/makeflawed.py makes other rows than examples/flawed.ormt has']


def statistics(options):
    from expected import statistics as compute
    from project import Project
    found = plain(compute(Project(flawed), humans))
    if expected.exists() and same(found, json.loads(expected.read_text(encoding='utf-8'))):
        return []
    expected.parent.mkdir(exist_ok=True)
    expected.write_text(lines(found), encoding='utf-8')
    return [f'{expected.relative_to(home)} was another; it is renewed, see what git says of it']


def exports(options):
    from exports import check
    from project import Project
    return check(Project(flawed), flawed, options)


def report(options):
    from pages import check
    return check(flawed, humans, options)


def formats(options):
    from formats import check
    return check(home / 'docs' / 'formats.md', flawed, options)


def main():
    parts = dict(example=example, statistics=statistics, exports=exports, report=report, formats=formats)
    parser = argparse.ArgumentParser()
    parser.add_argument('--study', type=Path, required=True)
    parser.add_argument('--output', type=Path, required=True)
    parser.add_argument('parts', nargs='+', choices=parts)
    options = parser.parse_args()
    options.study = options.study.resolve()
    options.output = options.output.resolve()
    failures = []
    for part in options.parts:
        found = parts[part](options)
        print(f'{part:<11} {"FAILED" if found else "ok"}', flush=True)
        failures += [f'{part}: {failure}' for failure in found]
    print('\n'.join(failures))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
