"""What was exported, read by the programs of others, against the project."""

import csv
import json
import math
import re
import shutil
import subprocess
from collections import Counter

LISTED = ('single_choice', 'multi_choice', 'likert', 'ranking')
FORMULA = ('=', '+', '-', '@', '\t', '\r')


# --- what is to be found ------------------------------------------------------------------------------------------

def wide_wanted(project):
    """uuid: {variable: value}, of the answers and what became of them."""
    wanted = {}
    for uuid, name, _, _ in project.personas:
        row = wanted[uuid] = dict(name=name)
        for number, question in enumerate(project.questions, 1):
            cell = project.cells[uuid, number]
            row[f'q{number}s'] = cell.status
            row |= answer_wanted(number, question, cell)
    return wanted


def answer_wanted(number, question, cell):
    there = cell.status == 'answered'
    kinds = range(len(question['labels']))
    if question['kind'] == 'numeric':
        return {f'q{number}': cell.number if there else None}
    if not question['labels'] or question['kind'] not in LISTED:
        return {f'q{number}t': cell.text if there else None}
    if question['kind'] in ('single_choice', 'likert'):
        return {f'q{number}': cell.labels[0] + 1 if there else None}
    if question['kind'] == 'ranking':
        return {f'q{number}_{kind + 1}': cell.labels.index(kind) + 1 if there and kind in cell.labels else None
                for kind in kinds}
    return {f'q{number}_{kind + 1}': int(kind in cell.labels) if there else None for kind in kinds}


def long_wanted(project):
    """(persona, question, status, text, number, JSON), of each stored answer and each open pair."""
    ids = {question['id']: number for number, question in enumerate(project.questions, 1)}
    newest = {(row[1], row[2]): row[0] for row in project.responses}
    wanted = []
    for key, uuid, question, text, number, stored, _ in project.responses:
        status = 'orphan'
        if uuid in project.tags_of and question in ids:
            is_newest = newest[uuid, question] == key
            status = project.cells[uuid, ids[question]].status if is_newest else 'answered twice'
        wanted.append((uuid, question, status, text, number, stored))
    open_pairs = [(uuid, project.questions[number - 1]['id'], 'open', None, None, None)
                  for (uuid, number), cell in project.cells.items() if cell.status == 'open']
    return wanted + open_pairs


# --- how each format is read: {table: rows of {variable: value}} --------------------------------------------------

def csv_rows(path):
    with open(path, newline='', encoding='utf-8') as file:
        return list(csv.DictReader(file, strict=True))


def read_csv(folder):
    def unmarked(text):
        return text[1:] if text.startswith("'") and text[1:2] in FORMULA else text

    return {table: [{key: unmarked(value) for key, value in row.items()} for row in csv_rows(folder / f'{table}.csv')]
            for table in ('long', 'wide')}


def read_xlsx(folder):
    from openpyxl import load_workbook
    from openpyxl.utils.escape import unescape
    book = load_workbook(next(folder.glob('*.xlsx')), read_only=True)
    tables = {}
    for table in ('long', 'wide'):
        rows = book[table].iter_rows(values_only=True)
        names = next(rows)
        tables[table] = [dict(zip(names, (unescape(cell) if isinstance(cell, str) else cell for cell in row)))
                         for row in rows]
    return tables


def read_sav(folder):
    tables = {}
    for table in ('long', 'wide'):
        target = folder / f'{table}.pspp.csv'
        script = folder / f'{table}.sps'
        script.write_text(f"SET MXWARNS=1000000.\nGET FILE='{folder / table}.sav'.\nSAVE TRANSLATE "
                          f"/OUTFILE='{target}' /TYPE=CSV /REPLACE /MISSING=RECODE /FIELDNAMES /CELLS=VALUES.\n",
                          encoding='utf-8')
        run = subprocess.run(['pspp', '-o', folder / f'{table}.txt', script], capture_output=True, text=True)
        # Its complaints tell of a file that others may refuse. Of a text of over 36 parts, some have the same name, since
        # the library numbers them by one character; readers go by their places.
        lines = [line for line in (run.stdout + run.stderr).splitlines() if line and 'duplicate name' not in line]
        kinds = Counter(re.sub(r"\S*\d\S*|`[^']*'", '...', line) for line in lines)
        tables.setdefault('complaints', []).extend(f'{table}: PSPP says {count} times: {line}'
                                                   for line, count in kinds.items())
        tables[table] = csv_rows(target)
    return tables


def read_dta(folder):
    import pandas
    tables = {}
    for table in ('long', 'wide'):
        frame = pandas.read_stata(folder / f'{table}.dta', convert_categoricals=False)
        tables[table] = frame.astype(object).where(frame.notna(), None).to_dict('records')
    return tables


def read_json(folder):
    document = json.loads(next(folder.glob('*.json')).read_text(encoding='utf-8'))
    return {table: document[table] for table in ('long', 'wide')}


# Long personas are beyond what the module takes for one cell.
csv.field_size_limit(10_000_000)

READERS = dict(csv=read_csv, xlsx=read_xlsx, sav=read_sav, dta=read_dta, json=read_json)
EXACT = ('csv', 'json')  # The others have other line ends, no spaces at the end of a text, or a limit.
CELL = dict(xlsx=32767)


# --- comparing ----------------------------------------------------------------------------------------------------

def shaped(value, form):
    """A value as the format can have it."""
    if value is None or value == '' or value == ' ':
        return None
    if form not in EXACT and isinstance(value, str):
        return value[:CELL.get(form, len(value))].replace('\r\n', '\n').replace('\r', '').rstrip() or None
    return value


def is_same(found, wanted, form):
    found, wanted = shaped(found, form), shaped(wanted, form)
    if wanted is None or found is None:
        return wanted is found
    if isinstance(wanted, (int, float)):
        return math.isclose(float(found), wanted, rel_tol=1e-12)
    return found == wanted


def number_of(value):
    return None if value in (None, '', ' ') else float(value)


def long_key(row, form):
    return (shaped(row['uuid'], form), number_of(row['question_id']), row['status'], shaped(row['text_answer'], form),
            shaped(row['json_answer'], form))


def differences(form, tables, project):
    found = tables.get('complaints', [])
    wide = {row['uuid']: row for row in tables['wide']}
    wanted = wide_wanted(project)
    if list(wide) != project.uuids and wide.keys() == wanted.keys():
        found.append('the personas of the wide table are in another order')
    if wide.keys() != wanted.keys():
        return found + ['the wide table has other personas']
    for uuid, row in wanted.items():
        found += [f'{uuid} {name}: {wide[uuid].get(name)!r} is not {value!r}' for name, value in row.items()
                  if name not in wide[uuid] or not is_same(wide[uuid][name], value, form)]
    rows = Counter(long_key(row, form) for row in tables['long'])
    wanted = Counter((shaped(uuid, form), number_of(question), status, shaped(text, form), shaped(stored, form))
                     for uuid, question, status, text, _, stored in long_wanted(project))
    found += [f'long: {row} is {"missing" if count > 0 else "too many"}'
              for row, count in ((row, wanted[row] - rows[row]) for row in wanted | rows) if count]
    return [f'{form}: {line[:300]}' for line in found]


def by_sqlite(folder, project):
    """The same CSV files by another reader."""
    script = f'.mode csv\n.import {folder / "long.csv"} long\n.import {folder / "wide.csv"} wide\n' \
             'SELECT count(*) FROM wide;\nSELECT status, count(*) FROM long GROUP BY status ORDER BY status;\n'
    found = subprocess.run(['sqlite3', '-bail', ':memory:'], input=script, text=True, check=True,
                           capture_output=True).stdout.split()
    counts = Counter(row[2] for row in long_wanted(project))
    wanted = [str(len(project.uuids))] + [f'"{status}",{counts[status]}' if ' ' in status else
                                          f'{status},{counts[status]}' for status in sorted(counts)]
    return [] if ' '.join(found) == ' '.join(wanted) else [f'sqlite3 counts {found}, not {wanted}']


def check(project, path, options):
    failures = []
    for form, read in READERS.items():
        folder = options.output / form
        shutil.rmtree(folder, ignore_errors=True)
        run = subprocess.run([options.study, 'export', path, '--to', form, '--out', folder], capture_output=True, text=True)
        if run.returncode != 0:
            failures.append(f'{form}: exit status {run.returncode}: {run.stderr.strip()}')
            continue
        try:
            found = differences(form, read(folder), project)
        except (OSError, KeyError, ValueError, csv.Error) as error:
            found = [f'{form}: it can\'t be read: {error!r}']
        if form == 'csv':
            found += by_sqlite(folder, project)
        print(f'  {form:<9} {len(found)} differences', flush=True)
        failures += found[:10]
    return failures
