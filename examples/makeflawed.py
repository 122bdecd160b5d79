#!/usr/bin/env python3
"""Makes examples/flawed.ormt: a project in which everything is wrong at least once that can be.

200 plainly made-up personas and 12 questions of all types, answered by dice. What is wrong with it is written where it
is made. The same seed gives the same rows.

usage: makeflawed.py [FILE]
"""

import json
import random
import sqlite3
import sys
from pathlib import Path

SEED = 20260302
PERSONAS = 200
home = Path(__file__).resolve().parent
dice = random.Random(SEED)


def pick(things):
    # Of random's functions only this one gives the same numbers in every version of Python.
    return things[int(dice.random() * len(things))]


def pick_weighted(things, weights):
    point = dice.random() * sum(weights)
    for thing, weight in zip(things, weights):
        point -= weight
        if point < 0:
            return thing
    return things[-1]


# --- the panel -------------------------------------------------------------------------------------------------

TRADES = ['baker', 'ferry hand', 'glazier', 'beekeeper', 'tram driver', 'bookbinder', 'shepherd', 'roofer', 'cook',
          'clock mender', 'night porter', 'gardener', 'typesetter', 'cooper', 'net maker', 'piano tuner']
PLACES = ['a harbour town', 'a hill village', 'the edge of a big city', 'a street of mills', 'an island',
          'a valley with one road', 'a flat above a shop', 'a farm at the end of the line']
HABITS = ['You keep every receipt.', 'You sleep badly and know all trains by their sound.', 'You distrust new things.',
          'You lend tools to everybody.', 'You eat standing up.', 'You read the last page first.',
          'You walk to work in any weather.', 'You write letters to the council.', 'You sing while you work.',
          'You save for a boat.', 'You never throw away string.', 'You are late for everything but dinner.']
HOMES = ['You live alone with a very old cat.', 'You share a house with four cousins.', 'There are three children.',
         'Your neighbours come to you with broken radios.', 'You rent two rooms from an aunt.',
         'Nobody has seen your kitchen table for years.']

RIGHT_TO_LEFT = 'אני שותה תה בבוקר \u202eand this is turned around\u202c وأحب القهوة مساءً'
FOUR_BYTES = '\U0001f375 tea, \U0001f469\u200d\U0001f33e on a farm, \U0001d4ea letter beyond the first plane'
CLOSING = '</text></svg></title></style></script><script>alert("out")</script><img src=x onerror=alert(1)>&amp;<!--'
FORMULA = '=HYPERLINK("http://example.invalid","look")'


def uuid_of(number):
    return f'00000000-0000-4000-8000-{number:012d}'


def narrative(number):
    habits = [HABITS[(number * 5 + k * (number % 4 + 1)) % len(HABITS)] for k in range(3)]
    return (f'You are Panel Member {number:03d}, a {TRADES[number % len(TRADES)]}, {20 + number * 7 % 55} years old, '
            f'from {PLACES[(number * 3) % len(PLACES)]}. {HOMES[number % len(HOMES)]} ' + ' '.join(dict.fromkeys(habits)))


def mould(number):
    # Ten personas from one mould: a single word tells them apart.
    return ('You are a member of a panel and work as a ' + TRADES[number % len(TRADES)] + '. You get up early, have a '
            'cup of something hot at the window and watch the street until the first bus has gone. You spend little, '
            'you know most people by name, and you answer what you are asked in one or two plain sentences without '
            'making a fuss about it.')


def text_of(number):
    special = {
        31: None,  # nothing to speak from
        32: '',
        33: narrative(33) + ' ' + CLOSING,
        34: narrative(34) + ' ' + RIGHT_TO_LEFT,
        35: narrative(35) + ' ' + FOUR_BYTES,
        36: ' '.join(f'Chapter {chapter}. {narrative(chapter)}' for chapter in range(1, 600)),  # beyond 130,000 bytes
        41: narrative(40),  # word for word that of another
        42: FORMULA,
    }
    if 50 <= number < 60:
        return mould(number)
    return special[number] if number in special else narrative(number)


def name_of(number):
    # One name is there twice.
    return 'Panel Member 044' if number == 45 else f'Panel Member {number:03d}'


TAGS = ['early', 'late', 'town', 'country', 'frugal', 'north', 'spare', '<b>bold</b>', 'a, b']


def tags_of(number):
    tags = ['early' if number % 3 else 'late', 'town' if number % 5 < 3 else 'country']
    if number % 4 == 0:
        tags.append('frugal')
    if number % 7 == 0 or number % 11 == 0:
        tags.append('north')
    if number in (33, 34):  # a small group
        tags += ['<b>bold</b>', 'a, b']
    return [] if 120 <= number < 125 else tags


def enter_panel(file):
    # "spare" is a tag of nobody.
    file.executemany('INSERT INTO tags (id, name) VALUES (?, ?)', enumerate(TAGS, 1))
    for number in range(1, PERSONAS + 1):
        text = text_of(number)
        # A few speak from a system prompt, which goes before the description.
        prompt = f'You are Panel Member {number:03d}. Answer briefly.' if number in (47, 48, 49) else None
        modified = '2026-03-06 10:00:00' if number in (70, 71) else '2026-03-01 07:30:00'  # two after they answered
        file.execute('INSERT INTO personas VALUES (?,?,?,?,?,?,?)',
                     (uuid_of(number), name_of(number), text, prompt, 'made by dice' if number % 20 == 0 else None,
                      f'2026-03-01T08:{number // 60:02d}:{number % 60:02d}.500', modified))
        for tag in tags_of(number):
            file.execute('INSERT INTO persona_tags VALUES (?, ?)', (uuid_of(number), TAGS.index(tag) + 1))


# --- the questionnaire -----------------------------------------------------------------------------------------

DRINKS = ['Black tea', 'Green tea', 'Coffee', 'Cocoa', 'Hot lemon']
BUYS = ['Tea', 'Coffee', 'Milk, fresh', 'Sugar', 'Biscuits']
AGREEMENT = ['Disagree strongly', 'Disagree', 'Neither', 'Agree', 'Agree strongly']
VIRTUES = ['Taste', 'Price', 'Warmth', 'Company']
OFTEN = ['Never', 'Sometimes', 'Sometimes', 'Often', 'Always']  # a label twice

QUESTIONS = [
    dict(prompt='Which hot drink do you like best, and why?', type='single_choice', labels=DRINKS, reasoning=1),
    # "Biscuits" is nowhere in the wording.
    dict(prompt='Which of these did you buy this month: tea, coffee, fresh milk (say "Milk, fresh"), sugar?',
         type='multi_choice', labels=BUYS),
    # Reasoning is not asked for with a text.
    dict(prompt='What makes a hot drink worth waiting for?', type='text', reasoning=1),
    dict(prompt='How many cups a day?', type='numeric'),
    # None of the labels is in the wording, and it was changed after it had been answered.
    dict(prompt='"A hot drink settles any quarrel." How far do you agree?', type='likert', labels=AGREEMENT,
         modified='2026-03-05 09:00:00'),
    dict(prompt='Rank what matters in a hot drink, first to last: Taste, Price, Warmth, Company.', type='ranking',
         labels=VIRTUES),
    dict(prompt='Which cup would you take?', type='single_choice', stored_labels='Tin, Glass, China'),  # no JSON
    dict(prompt=None, type='text'),
    dict(prompt='How many cups a day?', type='text'),  # the wording of another
    dict(prompt='How often do you skip breakfast? Never, Sometimes, Often or Always?', type='likert', labels=OFTEN,
         search=0),
    # A condition, a file and reasoning that is never asked for in words.
    dict(prompt='What should a cup cost at most, in cents?', type='numeric', reasoning=1, condition=('if', 1, 'Coffee'),
         attachment='prices.pdf'),
    dict(prompt='Summarise what this panel member said. ' + CLOSING, type='text', judge=1),
]


def enter_questionnaire(file):
    for number, question in enumerate(QUESTIONS, 1):
        labels = question.get('stored_labels')
        if 'labels' in question:
            labels = json.dumps(question['labels'], separators=(',', ':'))
        when, depends, answer = question.get('condition', ('always', None, None))
        file.execute('INSERT INTO questions (question_id, order_num, prompt, answer_type, labels, reasoning_required, '
                     'judge_question, search_enabled, ask_when, depends_on_question_id, depends_on_answer, serial, '
                     'created_at, modified_at) VALUES (?,?,?,?,?,?,?,?,?,?,?,1,?,?)',
                     (number, number, question['prompt'], question['type'], labels, question.get('reasoning', 0),
                      question.get('judge', 0), question.get('search', 1), when, depends, answer,
                      '2026-03-01 07:00:00', question.get('modified', '2026-03-01 07:00:00')))
        if 'attachment' in question:
            file.execute('INSERT INTO question_attachments (question_id, filename) VALUES (?, ?)',
                         (number, question['attachment']))


# --- the answers -----------------------------------------------------------------------------------------------

WAITING = ['warmth in both hands', 'the smell before the first sip', 'somebody who waits with me', 'a clean cup',
           'time that belongs to nobody', 'honey from this valley', 'a window seat', 'the sound of the kettle',
           'a biscuit on the saucer', 'knowing who made it']
REFUSAL = "I'm sorry, but as an AI language model I can't answer that."
HEDGE = 'It depends on many factors, and it is hard to say in general; some might prefer one thing, others another.'


def reply(answer, reasoning=None):
    fields = {'answer': answer}
    if reasoning is not None:
        fields['reasoning'] = reasoning
    return json.dumps(fields, separators=(',', ':'), sort_keys=True, ensure_ascii=False)


def text_answer(answer):
    return answer, None, None


def object_answer(answer, reasoning=None):
    return answer, None, reply(answer, reasoning)


def number_answer(number):
    return None, number, reply(number)


def drink(number):
    weights = (3, 2, 9, 1, 1) if number % 3 else (4, 3, 2, 4, 2)  # the tag "early" tells something
    best = pick_weighted(DRINKS, weights)
    others = [label for label in DRINKS if label != best]
    reason = f'{best} goes with my mornings, and I like {pick(WAITING)}.'
    if number % 25 == 0:  # the reasoning is for another one
        reason = f'I would always take {pick(others)}, nothing else comes near it.'
    return object_answer(best, reason)


def buys(number):
    chosen = [label for label, share in zip(BUYS, (0.7, 0.8, 0.5, 0.3, 0.1)) if dice.random() < share] or BUYS[:1]
    if number % 4 == 0:
        return None, None, reply(chosen)  # an array, which is kept in the object alone
    return object_answer((', ', '; ', '\n')[number % 3].join(chosen))


def waiting(number):
    return text_answer(f'For me it is {pick(WAITING)} and {pick(WAITING)}. A {TRADES[number % len(TRADES)]} learns to '
                       f'wait, but not for {pick(WAITING)}.')


def cups(number):
    return number_answer(int(2 + 2 * (number % 3 == 0) + dice.random() * 3))


def agreement(number):
    return object_answer(pick_weighted(AGREEMENT, (0, 1, 3, 12, 2)))  # nearly all the same


def virtues(number):
    left, order = list(VIRTUES), []
    while left:
        order.append(pick_weighted(left, [4, 1, 2, 2][:len(left)]))
        left.remove(order[-1])
    return object_answer(', '.join(order) if number % 2 else json.dumps(order))


def cup(number):
    return text_answer(pick(['Tin', 'China', 'The big one']))


def breakfast(number):
    return object_answer(pick_weighted(OFTEN, (3, 0, 4, 2, 1)))


def price(number):
    return number_answer(round(150 + 250 * dice.random() * dice.random(), 2))


MAKERS = {1: drink, 2: buys, 3: waiting, 4: cups, 5: agreement, 6: virtues, 7: cup,
          9: lambda number: text_answer(pick(['Three.', 'Two, sometimes three.', 'As many as there are.'])),
          10: breakfast, 11: price,
          12: lambda number: text_answer(f'Panel member {number} likes {pick(WAITING)}.')}

# What stands for one answer: (persona, question) -> text, number, JSON.
ODD = {
    (1, 1): object_answer('Cola', 'None of these.'),  # out of list
    (2, 1): (None, None, 'Coffee, of course!'),  # a reply that was no object
    (3, 1): (None, None, '{"reasoning":"I never said."}'),  # an object without an answer
    (4, 2): object_answer('Tea, Cola'),
    (5, 5): object_answer('I rather agree, I think'),
    (6, 5): object_answer('Agree, Disagree'),
    (7, 6): object_answer('Taste, Price, Taste'),
    (8, 4): ('a few', None, reply('a few')),  # not a number
    (9, 4): (None, float('inf'), reply('1e999')),  # an infinite one
    (10, 4): (None, -3.0, reply(-3)),  # below nothing
    (11, 4): (None, 1e6, reply(1000000)),  # far out
    (12, 4): (None, None, '{}'),  # unreadable
    (13, 3): ('', None, None),
    (14, 3): text_answer(CLOSING),
    (15, 3): text_answer(RIGHT_TO_LEFT),
    (16, 3): text_answer(FOUR_BYTES),
    (17, 3): text_answer(FORMULA),
    (18, 3): text_answer('+49 or so\r\n"quoted", then\ttabbed\n\nand a blank line'),
    (19, 3): text_answer('Warm. ' * 4000),  # long
    (20, 3): text_answer(REFUSAL),
    (21, 3): text_answer(HEDGE),
    (22, 1): object_answer('Coffee', REFUSAL),
    (23, 1): object_answer('coffee ', HEDGE + ' So coffee.'),  # a label but for case and white space
    (24, 11): number_answer(0.1 + 0.2),
    (26, 12): text_answer(REFUSAL),
    (30, 8): text_answer('To what?'),  # an answer to a question without a wording
}


def answers():
    """(persona, question, text, number, JSON), a persona after the other."""
    alike = {question: make(3) for question, make in MAKERS.items()}
    for number in range(1, PERSONAS + 1):
        for question in range(1, len(QUESTIONS) + 1):
            made = MAKERS[question](number) if question in MAKERS else None
            if 100 <= number < 105:
                made = alike.get(question)  # five who say the same throughout
            made = ODD.get((number, question), made)
            # Some were never asked, some not to the end.
            unasked = 185 <= number < 195 or (number >= 195 and question > 4) or (number % 40 == 0 and question == 11)
            if made is not None and not unasked:
                yield number, question, *made


def enter_answers(file):
    seconds = 0
    insert = ('INSERT INTO responses (persona_uuid, question_id, text_answer, numeric_answer, json_answer, created_at) '
              'VALUES (?,?,?,?,?,?)')

    def at(second):
        return f'2026-03-02 {9 + second // 3600:02d}:{second // 60 % 60:02d}:{second % 60:02d}'

    for number, question, *stored in answers():
        seconds += 1
        file.execute(insert, (uuid_of(number), question, *stored, at(seconds)))
    # Answered twice: a later one counts, and of one second the one that was stored first.
    file.execute(insert, (uuid_of(1), 4, *number_answer(9), at(seconds + 60)))
    file.execute(insert, (uuid_of(2), 5, *object_answer('Disagree strongly'), at(seconds + 60)))
    file.execute(insert, (uuid_of(2), 5, *object_answer('Agree strongly'), at(seconds + 60)))
    # Of personas and to questions that were deleted.
    file.execute(insert, (uuid_of(900), 1, *object_answer('Coffee', 'I am gone.'), at(seconds + 61)))
    file.execute(insert, (uuid_of(900), 3, *text_answer('Nobody knows me.'), at(seconds + 62)))
    file.execute(insert, (uuid_of(1), 99, *text_answer('To something that was deleted.'), at(seconds + 63)))
    file.execute(insert, (None, 1, *object_answer('Cocoa'), None))


def make(path):
    path.unlink(missing_ok=True)
    file = sqlite3.connect(path)
    file.executescript((home.parent / 'sql' / 'schema.sql').read_text(encoding='utf-8'))
    file.execute('INSERT INTO boilerplate VALUES (?, ?)',
                 ('You take part in a survey. Stay in character.', 'Answer as this person would, and briefly.'))
    enter_panel(file)
    enter_questionnaire(file)
    enter_answers(file)
    file.commit()
    file.execute('VACUUM')
    file.close()


if __name__ == '__main__':
    target = Path(sys.argv[1]) if len(sys.argv) > 1 else home / 'flawed.ormt'
    make(target)
    print(f'seed {SEED}: {target.name}, {target.stat().st_size} bytes')
