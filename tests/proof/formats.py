"""The programs that docs/formats.md gives to its readers, run by their tools, against what is exported."""

import csv
import io
import json
import math
import re
import subprocess

csv.field_size_limit(10_000_000)

TOOLS = dict(
    sql=lambda script, project: dict(args=['sqlite3', '-batch', '-readonly', project], stdin=script.open()),
    py=lambda script, project: dict(args=['python3', '-B', script, project]),
    R=lambda script, project: dict(args=['Rscript', '--vanilla', script, project]))


def blocks(page):
    """{file: program} of the code blocks that begin with the name of a file."""
    found = re.findall(r'^```\w+\n(?:--|#) (\w+\.\w+)\n(.*?)^```$', page.read_text(encoding='utf-8'), re.M | re.S)
    return dict(found)


def is_same(found, wanted):
    try:
        return math.isclose(float(found), float(wanted), rel_tol=1e-12)
    except (TypeError, ValueError):
        return (found or '') == ('' if wanted is None else str(wanted))


def answer_of(row):
    """As the grid shows it, but for the rounding of a number."""
    is_number = row['text_answer'] is None and row['numeric_answer'] is not None
    return row['numeric_answer'] if is_number else row['shown']


def tidy_wanted(document):
    return {(row['uuid'], str(row['question_id'])):
            {name: row[name] for name in ('name', 'tags', 'question', 'prompt', 'reasoning', 'time')} |
            dict(answer=answer_of(row), number=row['numeric_answer'])
            for row in document['long'] if row['status'] not in ('open', 'answered twice', 'orphan')}


def wide_wanted(document):
    wanted = {(row['uuid'],): dict(name=row['name']) for row in document['wide']}
    columns = sorted({row['question'] for row in document['long'] if row['question'] is not None})
    for row in wanted.values():
        row |= {f'q{place}{part}': None for place in columns for part in ('', 'r')}
    for row in document['long']:
        if row['status'] not in ('open', 'answered twice', 'orphan'):
            wanted[row['uuid'],] |= {f'q{row["question"]}': answer_of(row), f'q{row["question"]}r': row['reasoning']}
    return wanted


TABLES = dict(tidy=(('uuid', 'question_id'), tidy_wanted), wide=(('uuid',), wide_wanted))


def differences(rows, keys, wanted):
    found = {tuple(row[key] for key in keys): row for row in rows}
    if found.keys() != wanted.keys() or len(found) != len(rows):
        return [f'{len(rows)} rows, not the {len(wanted)} that are exported']
    return [f'{key} {name}: {found[key].get(name)!r} is not {value!r}'[:300] for key, row in wanted.items()
            for name, value in row.items() if name not in found[key] or not is_same(found[key][name], value)]


def run(file, program, project, folder):
    """The rows that a program writes, or why there are none."""
    script = folder / file
    script.write_text(program, encoding='utf-8')
    done = subprocess.run(**TOOLS[file.split('.')[1]](script, project), capture_output=True, cwd=folder)
    if done.returncode != 0:
        return [], done.stderr.decode(errors='replace').strip() or f'exit status {done.returncode}'
    return list(csv.DictReader(io.StringIO(done.stdout.decode('utf-8'), newline=''), strict=True)), None


def check(page, project, options):
    folder = options.output / 'formats'
    folder.mkdir(exist_ok=True)
    target = folder / 'export.json'
    subprocess.run([options.study, 'export', project, '--to', 'json', '--out', target, '--force'], check=True)
    document = json.loads(target.read_text(encoding='utf-8'))
    programs = blocks(page)
    wanted_files = {f'{table}.{suffix}' for table in TABLES for suffix in TOOLS}
    if programs.keys() != wanted_files:
        return [f'{page.name} has the programs {sorted(programs)}']
    failures = []
    for file, program in programs.items():
        keys, wanted = TABLES[file.split('.')[0]]
        try:
            rows, reason = run(file, program, project, folder)
            found = [reason] if reason else differences(rows, keys, wanted(document))
        except OSError as error:
            found = [f'it can\'t be run: {error}']
        print(f'  {file:<9} {len(found)} differences', flush=True)
        failures += [f'{file}: {line}' for line in found[:10]]
    return failures
