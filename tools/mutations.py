"""The one-line changes that can be made to C++ as this tree formats it."""

import random
import re
from dataclasses import dataclass

token = re.compile(
    r'(?P<comment>//[^\n]*|/\*.*?\*/)'
    r'|(?P<directive>^[ \t]*\#(?:\\\n|[^\n])*)'
    r'|(?P<raw>\bu?8?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")'
    r'|(?P<text>"(?:\\.|[^"\\\n])*")'
    r"|(?P<char>'(?:\\.|[^'\\\n])+')"
    r'|(?P<word>[A-Za-z_]\w*)'
    r"|(?P<number>\d[\w'.]*)"
    r'|(?P<operator>==|!=|<=|>=|&&|\|\||\+\+|--|->|::|\+=|-=|[-+<>{}();=?:\[\],!&|*/%.~^])',
    re.DOTALL | re.MULTILINE)

# Only with a space on both sides: that tells a comparison from a template's bracket, a sum from a sign.
swaps = {'==': ['!='], '!=': ['=='], '<': ['<=', '>'], '<=': ['<', '>='], '>': ['>=', '<'], '>=': ['>', '<='],
         '&&': ['||'], '||': ['&&'], '+': ['-'], '-': ['+'], '+=': ['-='], '-=': ['+=']}
words = {'true': 'false', 'false': 'true', 'Yes': 'No', 'No': 'Yes', 'Ok': 'Cancel', 'Cancel': 'Ok',
         'Checked': 'Unchecked', 'Unchecked': 'Checked', 'AscendingOrder': 'DescendingOrder',
         'Horizontal': 'Vertical', 'Vertical': 'Horizontal', 'CaseSensitive': 'CaseInsensitive',
         'CaseInsensitive': 'CaseSensitive', 'KeepEmptyParts': 'SkipEmptyParts', 'SkipEmptyParts': 'KeepEmptyParts',
         'ReadOnly': 'WriteOnly', 'DisplayRole': 'UserRole', 'UserRole': 'DisplayRole'}
# A statement that starts with one of these declares something, or says nothing at run time.
declaring = {'const', 'auto', 'static', 'using', 'constexpr', 'static_assert', 'friend', 'enum', 'struct', 'class',
             'typedef', 'case', 'default', 'else', 'Q_UNUSED', 'Q_UNREACHABLE', 'break'}
sameAsEmpty = {f'return {value};' for value in ('{}', 'nullptr', 'false', '0', 'std::nullopt')}


@dataclass(frozen=True)
class Mutant:
    file: str
    line: int  # from 1
    number: int  # among those of the line, from 1
    old: str
    new: str

    @property
    def place(self):
        return f'{self.file}:{self.line}:{self.number}'


def tokens(source):
    """What the compiler reads, as (kind, text, offset)."""
    return [(m.lastgroup, m.group(), m.start()) for m in token.finditer(source)
            if m.lastgroup not in ('comment', 'directive')]


def enumerators(sources):
    """The tree's own enumerations: each qualified name, and the one that stands behind it."""
    following = {}
    for source in sources:
        for name, body in re.findall(r'\benum (?:class )?(\w+)[^{;]*\{([^}]*)\}', source):
            names = re.findall(r'^\s*(\w+)', re.sub(r'//[^\n]*', '', body).replace(',', '\n'), re.MULTILINE)
            for one, other in zip(names, names[1:] + names[:1]):
                if one != other:
                    following[name, one] = other
    return following


def blocks(found):
    """Beside each token: whether it stands in the body of a function."""
    inside, stack, begin = [], [], 0
    for i, (_, text, _) in enumerate(found):
        inside.append('code' in stack)
        if text == '{':
            head = [t for _, t, _ in found[begin:i]]
            isType = {'class', 'struct', 'namespace', 'enum', 'union'} & set(head) and '(' not in head
            stack.append('type' if isType else 'code' if '(' in head else 'data')
        if text == '}' and stack:
            stack.pop()
        if text in '{};':
            begin = i + 1
    return inside


def closing(found, i):
    """The index of the parenthesis that closes the one at i, and of the last semicolon between them."""
    depth, semicolon = 0, i
    for j in range(i, len(found)):
        depth += {'(': 1, ')': -1}.get(found[j][1], 0)
        if found[j][1] == ';':
            semicolon = j
        if depth == 0:
            return j, semicolon
    return i, i


def startsStatement(source, found, i):
    """Whether a line starts with the word at i, and with it a statement that does something."""
    _, text, at = found[i]
    isFirst = source[source.rfind('\n', 0, at) + 1:at].isspace()
    isDeclaration = text in declaring or (found[i + 1][0] == 'word' and text not in ('return', 'delete', 'emit'))
    return isFirst and not isDeclaration and found[i - 1][1] in ('{', '}', ';', ')', 'else', ':')


def edits(source, following):
    """Each change as (begin, end, replacement), all within a line."""
    found = tokens(source)
    inside = blocks(found)
    for i, (kind, text, at) in enumerate(found):
        end = at + len(text)
        previous = found[i - 1][1] if i else ''
        if kind == 'operator' and text in swaps and source[at - 1] == source[end:end + 1] == ' ':
            yield from ((at, end, other) for other in swaps[text])
        elif kind == 'word' and text in words and found[i + 1][1] != '(':
            yield at, end, words[text]
        elif kind == 'word' and previous == '::' and (found[i - 2][1], text) in following:
            yield at, end, following[found[i - 2][1], text]
        elif kind == 'number' and text.isdigit():
            yield from ((at, end, other) for other in sorted({str(int(text) + 1), '1' if text == '0' else '0'}))
        elif kind == 'text' and text != '""':
            yield at, end, '""'
        elif kind == 'word' and text in ('if', 'while') and inside[i] and found[i + 1][1] == '(':
            last, first = closing(found, i + 1)
            condition = source[found[first][2] + 1:found[last][2]]
            yield found[first][2] + 1, found[last][2], f'{" " if condition[0] == " " else ""}!({condition.strip()})'
        if kind == 'word' and inside[i] and startsStatement(source, found, i):
            lineEnd = source.find('\n', at)
            statement = source[at:lineEnd]
            if statement.endswith(';') and statement not in sameAsEmpty:
                # To run off the end of a function is no change that a test could judge.
                yield at, lineEnd, 'return {};' if statement.startswith('return ') else ';'


def mutants(file, source, following):
    """All changes of a file, each a Mutant; what spans lines is left alone."""
    counts = {}
    for begin, end, replacement in edits(source, following):
        if '\n' in source[begin:end]:
            continue
        start, stop = source.rfind('\n', 0, begin) + 1, source.find('\n', end)
        line = source.count('\n', 0, begin) + 1
        counts[line] = counts.get(line, 0) + 1
        yield Mutant(file, line, counts[line], source[start:stop],
                     source[start:begin] + replacement + source[end:stop])


def chosen(everything, seed):
    """One change of each line, in an order that the seed decides."""
    byLine = {}
    for mutant in everything:
        byLine.setdefault((mutant.file, mutant.line), []).append(mutant)
    choice = random.Random(seed)
    lines = list(byLine.values())
    choice.shuffle(lines)
    return [choice.choice(line) for line in lines]
