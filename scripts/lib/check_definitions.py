"""Checks that a header of its own room declares what a .cpp file of src/ defines for other files.

Prints each function and variable that none declares, with the header of another room that does, and
ends with 1. Reads the sources alone, so nothing has to be built. Overloads are told apart by their
parameter types as they are spelled; a member belongs to the room whose header has its class. What it
misreads it finds in no header and reports.
"""

import pathlib
import re
import sys

SOURCE = pathlib.Path(__file__).resolve().parents[2] / 'src'
TOKEN = re.compile(r'''
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n\\]|\\.)*)
  | (?P<raw>(?:u8|[uUL])?R"(?P<end>[^(\s]*)\(.*?\)(?P=end)")
  | (?P<text>(?:u8|[uUL])?(?:"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)*'))
  | (?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark>::|->|.)''', re.X | re.S | re.M)
CLOSING = {'(': ')', '[': ']', '{': '}', '<': '>'}
TYPES = {'class', 'struct', 'union', 'enum'}
PLAIN_TYPES = {'int', 'char', 'short', 'long', 'float', 'double', 'bool', 'unsigned', 'signed', 'auto'}


def tokens_of(text):
    """The tokens, each with its line."""
    line, last, tokens = 1, 0, []
    for match in TOKEN.finditer(text):
        line += text.count('\n', last, match.start())
        last = match.start()
        if match['skip'] is None:
            tokens.append(('""' if match['raw'] or match['text'] else match[0], line))
    return tokens


def is_word(token):
    return re.fullmatch(r'[A-Za-z_]\w*', token) is not None


def types_of(parameters):
    """The types of a parameter list, as text."""
    parts, part, depth = [], [], 0
    for token in [*parameters, ',']:
        if token == ',' and depth == 0:
            parts.append(part)
            part = []
            continue
        depth += (token in '([{<') - (token in ')]}>')
        part.append(token)
    types = []
    for part in parts:
        if '=' in part:
            part = part[:part.index('=')]
        if len(part) > 1 and is_word(part[-1]) and part[-1] not in PLAIN_TYPES and part[-2] not in (
                '::', 'const'):
            part = part[:-1]
        if part[:1] == ['const'] and not {'&', '*'} & set(part):
            part = part[1:]
        types.append(' '.join(part))
    return '' if types == ['void'] else ', '.join(types)


class File:
    """What one file declares and defines at namespace scope."""

    def __init__(self, path):
        self.path = path
        self.tokens = tokens_of(path.read_text(encoding='utf-8'))
        self.functions = []  # (namespaces, parts of the name, parameter types, line)
        self.variables = []  # (parts of the name, the words up to it, line)
        self.classes = {}  # name and line
        self.scope(0, len(self.tokens), ())

    def at(self, i):
        return self.tokens[i][0] if i < len(self.tokens) else ''

    def after(self, i):
        """Where what the bracket at i opens has ended."""
        opening = self.at(i)
        depth = 0
        while i < len(self.tokens):
            token = self.at(i)
            if opening == '<' and token in '([{':
                i = self.after(i)
                continue
            depth += (token == opening) - (token == CLOSING[opening])
            i += 1
            if depth == 0:
                return i
        sys.exit(f'{self.path}: {opening} is never closed')

    def step(self, i):
        """The next token of this level."""
        return self.after(i) if self.at(i) in '([{' else i + 1

    def scope(self, i, end, namespaces):
        while i < end:
            start = i
            while self.at(i) == 'inline' and self.at(i + 1) == 'namespace':
                i += 1
            if self.at(i) == 'namespace':
                opening = i
                while self.at(opening) not in ('{', ';'):
                    opening += 1
                if self.at(opening) == ';':  # another name for a namespace
                    i = opening + 1
                    continue
                name = ''.join(self.at(n) for n in range(i + 1, opening))
                i = self.after(opening)
                if name:  # nobody else sees what is in one without a name
                    self.scope(opening + 1, i - 1, (*namespaces, *name.split('::')))
            elif self.at(i) == 'extern' and self.at(i + 1) == '""' and self.at(i + 2) == '{':
                i = self.after(i + 2)
                self.scope(start + 3, i - 1, namespaces)
            elif self.at(i) in ('using', 'typedef', 'static_assert', ';') or (
                    self.at(i) == 'template' and self.at(i + 1) != '<'):  # an instantiation
                while self.at(i) != ';':
                    i = self.step(i)
                i += 1
            else:
                i = self.statement(i, namespaces)

    def statement(self, i, namespaces):
        """Notes one declaration, definition or type, and says where it has ended."""
        while self.at(i) == 'template':
            i = self.after(i + 1)
        start = i
        opening = None  # of the parameters
        value = None  # where a variable's begins
        initialises = has_body = False
        while self.at(i) != ';':
            token = self.at(i)
            if token == 'operator' and opening is None:
                i += 3 if self.at(i + 1) == '(' else 1
                while self.at(i) != '(':
                    i += 1
                continue
            if token == '=' and value is None:
                value = i
            elif token == ':' and opening is not None:
                initialises = True  # the members of a new object
            elif token == '(' and opening is None and value is None:
                opening = i
            elif token == '{' and value is None and opening is None:
                if self.at(start) in TYPES:
                    self.type(start, i, namespaces)
                else:
                    value = i
            elif token == '{' and value is None:
                if not initialises or not (is_word(self.at(i - 1)) or self.at(i - 1) == '>'):
                    has_body = True
                    break
            i = self.step(i)
        end = self.after(i) if has_body else i + 1
        words = [self.at(n) for n in range(start, i)]
        if opening is not None:
            parts = self.name_before(opening)
            inside = [self.at(n) for n in range(opening + 1, self.after(opening) - 1)]
            if 'static' not in words[:opening - start] and parts:
                self.functions.append(
                    (namespaces, parts, types_of(inside), self.tokens[opening][1]))
        elif self.at(start) not in TYPES:
            named = i if value is None else value
            while self.at(named - 1) == ']':
                while self.at(named) != '[':
                    named -= 1
            before = [self.at(n) for n in range(start, named)]
            self.variables.append((self.name_before(named), before, self.tokens[start][1]))
        return end

    def name_before(self, i):
        """The parts of the qualified name that ends before i."""
        first = i - 1
        while first > 0 and self.at(first) != 'operator' and i - first < 6:
            first -= 1
        if self.at(first) == 'operator':
            parts = ['operator' + ''.join(self.at(n) for n in range(first + 1, i))]
        else:
            first = i - 1
            if not is_word(self.at(first)):
                return []
            parts = [self.at(first)]
            if self.at(first - 1) == '~':
                first -= 1
        while self.at(first - 1) == '::':
            first -= 2
            if self.at(first) == '>':
                while self.at(first) != '<':
                    first -= 1
                first -= 1
            parts.insert(0, self.at(first))
        return parts

    def type(self, start, opening, namespaces):
        names = [self.at(n) for n in range(start, opening) if is_word(self.at(n))]
        names = [name for name in names if name not in TYPES and name != 'final']
        if not names:
            return
        self.classes[names[0]] = self.tokens[start][1]
        i = opening + 1
        end = self.after(opening) - 1
        while i < end:
            if self.at(i) == 'friend':
                i = self.statement(i + 1, namespaces)
            else:
                i = self.step(i)


def room_folders():
    text = re.sub(r'#.*', '', (SOURCE / 'CMakeLists.txt').read_text(encoding='utf-8'))
    rooms = {'host', 'exporter/load', 'app/main', 'cli/pages'}
    for name, rest in re.findall(r'mapexport_room\((\w+)([^)]*)\)', text):
        folder = re.search(r'FOLDER\s+(\S+)', rest)
        rooms.add(folder[1] if folder else name)
    return rooms


def main():
    rooms = room_folders()
    headers, sources = [], []
    for path in sorted(SOURCE.rglob('*')):
        if path.suffix not in ('.h', '.cpp'):
            continue
        folder = path.relative_to(SOURCE).parent
        room = next((str(f) for f in (folder, *folder.parents) if str(f) in rooms), None)
        (headers if path.suffix == '.h' else sources).append((room, File(path)))

    declared, classes, externs = {}, {}, {}
    for room, file in headers:
        for namespaces, parts, parameters, line in file.functions:
            declared.setdefault((*namespaces, *parts, parameters), []).append((room, file, line))
        for name, line in file.classes.items():
            classes.setdefault(name, []).append((room, file, line))
        for parts, words, line in file.variables:
            if 'extern' in words:
                externs.setdefault(parts[-1], []).append((room, file, line))

    bad = []

    def require(found, room, file, line, name):
        if any(where == room for where, _, _ in found):
            return
        text = f'{file.path.relative_to(SOURCE.parent)}:{line}: no header of {room} declares {name}'
        if found:
            text += f', but {found[0][1].path.relative_to(SOURCE.parent)}:{found[0][2]} does'
        bad.append(text)

    for room, file in sources:
        for namespaces, parts, parameters, line in file.functions:
            name = '::'.join(parts)
            if name == 'main' or re.match(r'operator(new|delete)', name):
                continue
            if len(parts) > 1:
                if parts[0] not in file.classes:
                    require(classes.get(parts[0], []), room, file, line, name)
            else:
                key = (*namespaces, *parts, parameters)
                found = declared.get(key) or externs.get(name, [])  # those of a function type
                require(found, room, file, line, f'{name}({parameters})')
        for parts, words, line in file.variables:
            if not parts or 'static' in words:
                continue
            if len(parts) > 1:
                if parts[0] not in file.classes:
                    require(classes.get(parts[0], []), room, file, line, '::'.join(parts))
            elif parts[-1] in externs or not {'const', 'constexpr'} & set(words):
                require(externs.get(parts[-1], []), room, file, line, parts[-1])
    print(*bad, sep='\n', end='\n' if bad else '')
    return 1 if bad else 0


if __name__ == '__main__':
    sys.exit(main())
