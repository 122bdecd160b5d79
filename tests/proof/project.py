"""The project as it is in its file, read without the program: what each persona said to each question."""

import json
import math
import sqlite3
from dataclasses import dataclass, field


def folded(text):
    return ' '.join(text.split()).casefold()


def match_one(text, labels):
    """The place of the label that a text is, None where it is none."""
    if text in labels:
        return labels.index(text)
    found = [place for place, label in enumerate(labels) if folded(label) == folded(text)]
    return found[0] if len(found) == 1 else None


def match_pieces(pieces, labels):
    """The places of labels, None where a piece is none or one comes twice."""
    places = [match_one(piece, labels) for piece in pieces]
    return places if None not in places and len(set(places)) == len(places) else None


def match_several(text, labels):
    if match_one(text, labels) is not None:
        return [match_one(text, labels)]
    try:
        if isinstance(array := json.loads(text), list):
            return match_pieces([str(element) for element in array], labels)
    except ValueError:
        pass
    for separator in '\n;,':
        pieces = [piece for piece in text.split(separator) if piece.strip()]
        whole = []
        while pieces:
            length = next((length for length in range(len(pieces), 0, -1)
                           if match_one(separator.join(pieces[:length]), labels) is not None), 1)
            whole.append(separator.join(pieces[:length]))
            pieces = pieces[length:]
        if separator in text and (places := match_pieces(whole, labels)) is not None:
            return places
    return None


@dataclass
class Cell:
    status: str = 'open'
    text: str = None
    number: float = None
    labels: list = field(default_factory=list)
    row: tuple = None  # text, number, JSON as they are stored


class Project:
    def __init__(self, path):
        file = sqlite3.connect(f'file:{path}?mode=ro', uri=True)
        rows = lambda statement: file.execute(statement).fetchall()
        self.personas = rows('SELECT uuid, name, system_prompt, attributes FROM personas ORDER BY name')
        self.uuids = [row[0] for row in self.personas]
        self.tags = [row[0] for row in rows('SELECT name FROM tags ORDER BY name')]
        self.tags_of = {uuid: set() for uuid in self.uuids}
        for uuid, tag in rows('SELECT l.persona_uuid, t.name FROM persona_tags l JOIN tags t ON t.id = l.tag_id'):
            self.tags_of[uuid].add(tag)
        self.questions = []
        for key, prompt, kind, labels in rows('SELECT question_id, prompt, answer_type, labels FROM questions '
                                              'ORDER BY order_num'):
            try:
                labels = json.loads(labels) if labels else []
            except ValueError:
                labels = []
            self.questions.append(dict(id=key, prompt=prompt or '', kind=kind, labels=labels))
        self.responses = rows('SELECT id, persona_uuid, question_id, text_answer, numeric_answer, json_answer, '
                              'created_at FROM responses ORDER BY created_at, id DESC')
        newest = {(row[1], row[2]): row[3:6] for row in self.responses}
        self.cells = {(uuid, number): self.cell(question, newest.get((uuid, question['id'])))
                      for uuid in self.uuids for number, question in enumerate(self.questions, 1)}

    def cell(self, question, row):
        if row is None:
            return Cell()
        text, number, stored = row[0] or '', row[1], row[2] or ''
        listed = bool(question['labels']) and question['kind'] in ('single_choice', 'multi_choice', 'likert', 'ranking')
        array = self.answer_array(stored) if listed and not text else []
        cell = Cell(status='answered', text=text or stored, number=None, row=row)
        if not text and number is None and not array:
            cell.status = 'unreadable'
        elif question['kind'] == 'numeric':
            cell.number = number if number is not None else self.number_in(text)
            if cell.number is None or not math.isfinite(cell.number):
                cell.status = 'not a number'
        elif listed:
            self.read_labels(question, cell, text, array)
        return cell

    @staticmethod
    def read_labels(question, cell, text, array):
        several = question['kind'] in ('multi_choice', 'ranking')
        if array:
            places = match_pieces(array, question['labels'])
        elif several:
            places = match_several(text, question['labels'])
        else:
            one = match_one(text, question['labels'])
            places = None if one is None else [one]
        if places is None or (not several and len(places) != 1):
            cell.status = 'out of list'
        else:
            cell.labels = places

    @staticmethod
    def answer_array(stored):
        try:
            answer = json.loads(stored).get('answer')
            return [str(element) for element in answer] if isinstance(answer, list) else []
        except (ValueError, AttributeError):
            return []

    @staticmethod
    def number_in(text):
        try:
            return float(text)
        except ValueError:
            return None

    def column(self, number):
        """The cells of a question, a persona after the other."""
        return [self.cells[uuid, number] for uuid in self.uuids]
