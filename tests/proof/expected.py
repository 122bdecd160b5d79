"""What SciPy and NumPy make of a project, and of the numbers of people beside it."""

import csv
import re
from collections import Counter

import numpy
from scipy.spatial.distance import jensenshannon
from scipy.stats import chi2_contingency, entropy, wasserstein_distance
from scipy.stats.contingency import association

ORDERED = 'likert'


def answered(project, number):
    return [(uuid, project.cells[uuid, number]) for uuid in project.uuids
            if project.cells[uuid, number].status == 'answered']


def code_of(question, cell):
    """One code for an answer of one label or of the first rank, None otherwise."""
    if question['labels'] and question['kind'] in ('single_choice', 'likert', 'ranking'):
        return cell.labels[0] if cell.status == 'answered' else None
    return None


def counts_of(project, number):
    question = project.questions[number - 1]
    cells = [cell for _, cell in answered(project, number)]
    if question['kind'] == 'multi_choice':
        places = [place for cell in cells for place in cell.labels]
    elif question['labels']:
        places = [cell.labels[0] for cell in cells]
    else:
        kinds = list(dict.fromkeys(cell.text for cell in cells))
        return numpy.bincount([kinds.index(cell.text) for cell in cells], minlength=len(kinds))
    return numpy.bincount(places, minlength=len(question['labels']))


def spread(counts):
    counts = numpy.asarray(counts, dtype=float)
    bits = entropy(counts, base=2)
    return dict(counts=counts.tolist(), share=counts.max() / counts.sum(), mostFrequent=int(counts.argmax()),
                ties=int((counts == counts.max()).sum()), entropy=bits,
                normalisedEntropy=None if len(counts) < 2 else bits / numpy.log2(len(counts)))


def corrected(table):
    table = table[table.sum(axis=1) > 0][:, table.sum(axis=0) > 0]
    n, (rows, columns) = table.sum(), table.shape
    phi = chi2_contingency(table, correction=False).statistic / n
    phi = max(0, phi - (rows - 1) * (columns - 1) / (n - 1))
    rows, columns = rows - (rows - 1) ** 2 / (n - 1), columns - (columns - 1) ** 2 / (n - 1)
    return numpy.sqrt(phi / min(rows - 1, columns - 1))


def by_tag_of_labels(project, number):
    """Cramér's V of having a tag and the label, both forms."""
    question = project.questions[number - 1]
    found = {}
    for tag in project.tags:
        table = numpy.zeros((2, len(question['labels'])))
        for uuid, cell in answered(project, number):
            table[int(tag in project.tags_of[uuid]), code_of(question, cell)] += 1
        kept = table[table.sum(axis=1) > 0][:, table.sum(axis=0) > 0]
        if min(kept.shape) > 1:
            found[tag] = [association(kept.astype(int), method='cramer'), corrected(table)]
    return found


def by_tag_of_numbers(project, number):
    """Eta squared, as the share of the variance that a regression on having the tag explains."""
    found = {}
    numbers = numpy.array([cell.number for _, cell in answered(project, number)])
    for tag in project.tags:
        has = numpy.array([float(tag in project.tags_of[uuid]) for uuid, _ in answered(project, number)])
        if 0 < has.sum() < len(has):
            design = numpy.column_stack([has, 1 - has])
            residual = numbers - design @ numpy.linalg.lstsq(design, numbers, rcond=None)[0]
            found[tag] = 1 - (residual ** 2).sum() / ((numbers - numbers.mean()) ** 2).sum()
    return found


def bins(numbers, most=40):
    if (numbers == numpy.floor(numbers)).all() and numpy.ptp(numbers) < most:
        edges = numpy.arange(numbers.min() - 0.5, numbers.max() + 1)
    else:
        quarter, three = numpy.quantile(numbers, [0.25, 0.75])
        width = 2 * (three - quarter) / len(numbers) ** (1 / 3)
        if width == 0:
            width = numpy.ptp(numbers) / (1 + numpy.log2(len(numbers)))
        edges = numpy.linspace(numbers.min(), numbers.max(), int(min(numpy.ceil(numpy.ptp(numbers) / width), most)) + 1)
    return [[low, high, int(count)] for low, high, count in zip(edges, edges[1:], numpy.histogram(numbers, edges)[0])]


def numbers_of(project, number):
    numbers = numpy.array([cell.number for _, cell in answered(project, number)])
    return dict(mean=numbers.mean(), standardDeviation=numbers.std(ddof=1),
                quantiles=numpy.quantile(numbers, [0, 0.1, 0.25, 0.5, 0.75, 0.9, 1]).tolist(), bins=bins(numbers))


def questions(project):
    found = {}
    for number, question in enumerate(project.questions, 1):
        entry = dict(kind=question['kind'], answered=len(answered(project, number)))
        if question['kind'] == 'numeric':
            entry |= numbers_of(project, number)
            entry['etaSquared'] = by_tag_of_numbers(project, number)
        else:
            entry |= spread(counts_of(project, number))
        if question['labels'] and question['kind'] in ('single_choice', 'likert'):
            entry['cramersV'] = by_tag_of_labels(project, number)
        found[str(number)] = entry
    return found


# --- how far personas are apart -----------------------------------------------------------------------------------

def ranks(order, kinds):
    left = (len(order) + 1 + kinds) / 2
    return [order.index(kind) + 1 if kind in order else left for kind in range(kinds)]


def pair_distances(question, cells):
    """A matrix of distances in one column, not a number where either has no answer."""
    there = numpy.array([cell.status == 'answered' for cell in cells])
    kinds = len(question['labels'])
    if question['kind'] == 'numeric':
        values = numpy.array([cell.number if cell.status == 'answered' else 0.0 for cell in cells])
        apart = numpy.abs(values[:, None] - values[None, :]) / numpy.ptp(values[there])
    elif question['kind'] == 'ranking':
        values = numpy.array([ranks(cell.labels, kinds) for cell in cells])
        apart = numpy.abs(values[:, None, :] - values[None, :, :]).sum(axis=2) / (kinds ** 2 // 2)
    elif question['kind'] == 'multi_choice':
        values = numpy.array([[kind in cell.labels for kind in range(kinds)] for cell in cells])
        either = (values[:, None, :] | values[None, :, :]).sum(axis=2)
        both = (values[:, None, :] & values[None, :, :]).sum(axis=2)
        apart = 1 - both / numpy.maximum(either, 1)
    elif question['kind'] == ORDERED and kinds:
        values = numpy.array([cell.labels[0] if cell.labels else 0 for cell in cells])
        apart = numpy.abs(values[:, None] - values[None, :]) / (kinds - 1)
    else:
        values = numpy.array([str(cell.labels) if kinds else cell.text or '' for cell in cells], dtype=object)
        apart = (values[:, None] != values[None, :]).astype(float)
    apart = apart.astype(float)
    apart[~there, :] = numpy.nan
    apart[:, ~there] = numpy.nan
    return apart


def panel(project):
    columns = numpy.array([pair_distances(question, project.column(number))
                           for number, question in enumerate(project.questions, 1)])
    shared = (~numpy.isnan(columns)).sum(axis=0)
    with numpy.errstate(invalid='ignore'):
        distances = numpy.where(shared > 0, numpy.nansum(columns, axis=0) / shared, numpy.nan)
    numpy.fill_diagonal(distances, numpy.nan)
    nearest = {}
    for row, uuid in enumerate(project.uuids):
        known = distances[row][~numpy.isnan(distances[row])]
        nearest[uuid] = known.min() if len(known) else None
    vectors = {}
    for uuid in project.uuids:
        cells = [project.cells[uuid, number] for number in range(1, len(project.questions) + 1)]
        vector = tuple((tuple(sorted(cell.labels)) if question['kind'] == 'multi_choice' else tuple(cell.labels),
                        cell.number, None if question['labels'] or question['kind'] == 'numeric' else cell.text)
                       if cell.status == 'answered' else None for cell, question in zip(cells, project.questions))
        if any(vector):
            vectors.setdefault(vector, []).append(uuid)
    known = [distance for distance in nearest.values() if distance is not None]
    return dict(nearest=nearest, meanNearest=float(numpy.mean(known)),
                pairs=[[project.uuids[a], project.uuids[b], None if numpy.isnan(distances[a, b]) else distances[a, b]]
                       for a, b in zip(range(0, 200, 7), range(3, 203, 7)) if b < len(project.uuids)],
                identical=sorted(sorted(group) for group in vectors.values() if len(group) > 1))


# --- against people -----------------------------------------------------------------------------------------------

def people(project, path):
    """question number: {label or value: weight}"""
    prompts = {question['prompt']: number for number, question in enumerate(project.questions, 1)}
    found = {}
    with open(path, newline='', encoding='utf-8') as file:
        for question, label, weight in list(csv.reader(file))[1:]:
            number = int(question) if question.isdigit() else prompts.get(question)
            if number:
                found.setdefault(number, {})[label] = float(weight)
    return found


def deviation(values, weights):
    middle = numpy.average(values, weights=weights)
    return numpy.sqrt(numpy.average((numpy.array(values) - middle) ** 2, weights=weights))


def against(project, path):
    found = {}
    for number, weights in people(project, path).items():
        question = project.questions[number - 1]
        if question['kind'] == 'numeric':
            ours = [cell.number for _, cell in answered(project, number)]
            theirs = [float(value) for value in weights]
            low, high = min(ours + theirs), max(ours + theirs)
            found[number] = dict(
                low=low, high=high, deviationRatio=numpy.std(ours) / deviation(theirs, list(weights.values())),
                wasserstein=wasserstein_distance(ours, theirs, None, list(weights.values())) / (high - low))
            continue
        # Of labels that are there twice the first one has the weight.
        theirs = [weights.get(label, 0) if place == question['labels'].index(label) else 0
                  for place, label in enumerate(question['labels'])]
        ours = counts_of(project, number)
        found[number] = dict(people=theirs, jensenShannon=jensenshannon(ours, theirs, base=2))
        if question['kind'] == ORDERED:
            places = numpy.arange(1, len(ours) + 1)
            found[number] |= dict(
                wasserstein=wasserstein_distance(places, places, ours, theirs) / (len(ours) - 1),
                deviationRatio=deviation(places, ours) / deviation(places, theirs))
    return {str(number): entry for number, entry in found.items()}


def agreement(project, one, other):
    """Two scales of five as if they were two runs."""
    pairs = [(a.labels[0], b.labels[0]) for a, b in zip(project.column(one), project.column(other))
             if a.status == b.status == 'answered']
    table = numpy.zeros((5, 5))
    for a, b in pairs:
        table[a, b] += 1
    table /= len(pairs)
    chance = (table.sum(axis=0) * table.sum(axis=1)).sum()
    return dict(one=one, other=other, pairs=len(pairs), share=table.trace(),
                kappa=(table.trace() - chance) / (1 - chance))


# --- texts --------------------------------------------------------------------------------------------------------

def words_of(text):
    return re.findall(r"[^\W_]+(?:['’][^\W_]+)*", text.casefold())


def shingles(text):
    words = words_of(text[:10000])
    length = min(3, len(words))
    return {tuple(words[at:at + length]) for at in range(len(words) - length + 1)} if words else set()


def alike(project):
    sets = [(uuid, shingles(attributes or '')) for uuid, _, _, attributes in project.personas]
    group = {uuid: {uuid} for uuid, _ in sets}
    pairs = []
    for place, (uuid, one) in enumerate(sets):
        for other_uuid, other in sets[place + 1:]:
            if one and other and (share := len(one & other) / len(one | other)) >= 0.5:
                pairs.append([uuid, other_uuid, share])
                if share >= 0.8:
                    merged = group[uuid] | group[other_uuid]
                    for member in merged:
                        group[member] = merged
    groups = {tuple(sorted(members)) for members in group.values() if len(members) > 1}
    return dict(groups=sorted(map(list, groups)), pairs=pairs[:40])


def words(project, number):
    """Of the texts that are written in nothing but ASCII."""
    texts = [cell.text for _, cell in answered(project, number) if cell.text.isascii()]
    times, in_texts = Counter(), Counter()
    for text in texts:
        times.update(words_of(text))
        in_texts.update(set(words_of(text)))
    return dict(question=number, lengths=[len(text) for text in texts],
                words={word: [in_texts[word], times[word]] for word, _ in in_texts.most_common(60)})


def statistics(project, humans):
    return dict(questions=questions(project), panel=panel(project), against=against(project, humans),
                agreement=agreement(project, 5, 10), alike=alike(project), text=words(project, 3))
