"""Rewrites C++ sources so that each mutation point asks at run time whether it is the one that is switched on.

A file becomes tokens, tokens become statements, as far as that needs no knowledge of types: conditions and initial
values turn into chains of ?:, other statements into chains of if and else. The text as it was stands last in each
chain and keeps its lines; the changed texts stand before it on the line where it begins. What does not compile is
dropped by the caller, who reads the compiler's messages: `Mutator.points_at`.
"""
import re

TOKEN = re.compile(
    r'(?P<pp>^[ \t]*#(?:\\\n|[^\n])*)'
    r'|(?P<comment>//[^\n]*|/\*.*?\*/)'
    r'|(?P<space>\s+)'
    r'|(?P<string>"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\')'
    r'|(?P<number>(?:0[xX][0-9a-fA-F\']+|\d[\d\']*)(?:\.\d+)?[uUlL]*)'
    r'|(?P<word>[A-Za-z_]\w*)'
    r'|(?P<punct>->|::|\+\+|--|<<=|>>=|\+=|-=|\*=|/=|\|=|&=|==|!=|<=|>=|&&|\|\||\.\.\.|<<|.)',
    re.M | re.S)

# Binary operators stand between blanks; angle brackets do not.
OPERATORS = {
    '<': ('<=', '>='), '<=': ('<', '>'), '>': ('>=', '<='), '>=': ('>', '<'), '==': ('!=',), '!=': ('==',),
    '&&': ('||',), '||': ('&&',), '+': ('-',), '-': ('+',), '+=': ('-=',), '-=': ('+=',),
}
SWAPPED_WORDS = {'true': 'false', 'false': 'true', 'TRUE': 'FALSE', 'FALSE': 'TRUE'}
COMPARISONS = {'<', '<=', '>', '>=', '==', '!=', '&&', '||'}
PAIRS = {'(': ')', '{': '}', '[': ']'}


class Token:
    __slots__ = ('kind', 'text', 'line')

    def __init__(self, kind, text, line):
        self.kind, self.text, self.line = kind, text, line


class Point:
    """One change of the source. `identity` survives edits elsewhere in the file."""

    def __init__(self, number, file, line, source, change):
        self.number, self.file, self.line, self.source, self.change = number, file, line, source, change

    @property
    def identity(self):
        return f'{self.file}\t{self.source}\t{self.change}'


def tokens_of(text):
    tokens, line = [], 1
    for match in TOKEN.finditer(text):
        tokens.append(Token(match.lastgroup, match.group(), line))
        line += match.group().count('\n')
    return tokens


class Mutator:
    """Rewrites one file. `number` counts the points of all files; `dropped` holds identities that are left out."""

    def __init__(self, file, text, next_number, dropped):
        self.file, self.lines, self.dropped = file, text.split('\n'), dropped
        self.tokens = tokens_of(text)
        self.next_number = next_number
        self.points, self.seen = [], {}
        self.partner = self._match()
        self.out, self.ranges = [], []
        self._scope()
        self.text = ''.join(self.out)
        self._locate()

    # ---- tokens ----

    def _match(self):
        partner, open_ = {}, []
        for i, token in enumerate(self.tokens):
            if token.kind == 'punct' and token.text in PAIRS:
                open_.append(i)
            elif token.kind == 'punct' and token.text in PAIRS.values():
                start = open_.pop()
                partner[start], partner[i] = i, start
        return partner

    def _blank(self, i):
        return self.tokens[i].kind in ('space', 'comment', 'pp')

    def _next(self, i):
        """The first token at or behind `i` that means something."""
        while i < len(self.tokens) and self._blank(i):
            i += 1
        return i

    def _before(self, i):
        i -= 1
        while i >= 0 and self._blank(i):
            i -= 1
        return i

    def _is(self, i, *texts):
        return i < len(self.tokens) and self.tokens[i].kind in ('punct', 'word') and self.tokens[i].text in texts

    def _raw(self, begin, end, changes=()):
        """The tokens on one line, without comments, some of them changed."""
        changes = dict(changes)
        parts = []
        for i in range(begin, end):
            token = self.tokens[i]
            if i in changes:
                parts.append(changes[i])
            elif token.kind in ('comment', 'space', 'pp'):
                parts.append(' ')
            else:
                parts.append(token.text)
        return ''.join(parts).strip()

    def _to(self, i, end, *texts):
        """The first of `texts` at or behind `i` outside all brackets; `end` when there is none."""
        while i < end:
            if self._is(i, *texts):
                return i
            i = self.partner[i] + 1 if self._is(i, '(', '{', '[') else i + 1
        return end

    # ---- output ----

    def _copy(self, begin, end):
        for i in range(begin, end):
            self.out.append(self.tokens[i].text)

    def _point(self, line, change):
        """A new point, or None when it has been dropped."""
        source = self.lines[line - 1].strip()
        count = self.seen[source, change] = self.seen.get((source, change), 0) + 1
        if count > 1:
            change = f'{change} #{count}'
        point = Point(self.next_number, self.file, line, source, change)
        self.next_number += 1
        if point.identity in self.dropped:
            return None
        self.points.append(point)
        return point

    def _put(self, point, text):
        self.ranges.append((point, len(self.out)))
        self.out.append(text)

    def _locate(self):
        """Where each change lies in the new text: (line, first column, last column), counted from 1."""
        starts, position = [], 0
        for part in self.out:
            starts.append(position)
            position += len(part)
        self.places = []
        for point, at in self.ranges:
            start = starts[at]
            line = self.text.count('\n', 0, start) + 1
            column = start - (self.text.rfind('\n', 0, start) + 1) + 1
            self.places.append((point, line, column, column + len(self.out[at])))

    def points_at(self, line, column):
        """The points that a compiler's message at this place speaks of."""
        exact = [p for p, l, first, last in self.places if l == line and first <= column <= last]
        return exact or [p for p, l, _, _ in self.places if l == line]

    # ---- changes of expressions ----

    def _lambda_body(self, i):
        """Whether the brace at `i` opens a lambda's body."""
        before = self._before(i)
        arrow = before
        while self.tokens[arrow].kind == 'word' or self._is(arrow, '*', '&', '::', '<', '>'):
            arrow = self._before(arrow)
        if self._is(arrow, '->'):  # the type that it answers
            before = self._before(arrow)
        if self._is(before, 'mutable', 'noexcept'):
            before = self._before(before)
        if self._is(before, ']'):
            return True
        return self._is(before, ')') and self._is(self._before(self.partner[before]), ']')

    def _changes(self, begin, end):
        """(line, change, text) for each change of one token of an expression."""
        i = begin
        while i < end:
            token = self.tokens[i]
            if self._is(i, '{') and self._lambda_body(i):
                i = self.partner[i] + 1
                continue
            between_blanks = (i > begin and i + 1 < end and self.tokens[i - 1].kind == 'space'
                              and self.tokens[i + 1].kind == 'space')
            if token.kind == 'punct' and between_blanks:
                for other in OPERATORS.get(token.text, ()):
                    yield token.line, f'{token.text} becomes {other}', self._raw(begin, end, {i: other})
            elif token.kind == 'number' and '.' not in token.text:
                value = token.text
                for other in ('+ 1', '- 1'):
                    if other == '- 1' and re.fullmatch(r'0[uUlL]*', value):
                        continue
                    yield (token.line, f'{value} becomes {value} {other}',
                           self._raw(begin, end, {i: f'({value} {other})'}))
            elif token.kind == 'word' and token.text in SWAPPED_WORDS:
                other = SWAPPED_WORDS[token.text]
                yield token.line, f'{token.text} becomes {other}', self._raw(begin, end, {i: other})
            i += 1

    def _expression(self, begin, end):
        """As it is, but for the bodies of lambdas."""
        i = begin
        while i < end:
            if self._is(i, '{') and self._lambda_body(i):
                self._block(i)
                i = self.partner[i] + 1
            else:
                self._copy(i, i + 1)
                i += 1

    def _has_lambda(self, begin, end):
        return any(self._is(i, '{') and self._lambda_body(i) for i in range(begin, end))

    def _value(self, begin, end, condition=False):
        """An expression whose value is used."""
        first = self._next(begin)
        if first >= end or self._has_lambda(begin, end) or self._is(first, '{'):
            self._expression(begin, end)
            return
        self._copy(begin, first)
        changes = list(self._changes(first, end))
        if condition:
            changes.append((self.tokens[first].line, 'condition negated', f'!({self._raw(first, end)})'))
        points = [(self._point(line, change), text) for line, change, text in changes]
        points = [(point, text) for point, text in points if point is not None]
        if not points:
            self._copy(first, end)
            return
        self.out.append('(')
        for point, text in points:
            self._put(point, f'VX_MUTANT({point.number}) ? ({text}) : ')
        self.out.append('(')
        self._copy(first, end)
        last = self._before(end)
        if self.tokens[end - 1].kind == 'comment' or (last < end - 1 and any(
                self.tokens[i].kind == 'comment' for i in range(last + 1, end))):
            self.out.append('\n')
        self.out.append('))')

    # ---- statements ----

    def _chain(self, begin, end, changes, original):
        """A statement with its changes in front of it."""
        points = [(self._point(line, change), text) for line, change, text in changes]
        points = [(point, text) for point, text in points if point is not None]
        if not points:
            original()
            return
        self.out.append('{ ')
        for point, text in points:
            self._put(point, f'if (VX_MUTANT({point.number})) {{ {text} }} else ')
        self.out.append('{ ')
        original()
        self.out.append(' } }')

    def _block(self, i):
        """The block whose brace is at `i`."""
        end = self.partner[i]
        self._copy(i, i + 1)
        i += 1
        while i < end:
            i = self._statement(i, end)
        self._copy(end, end + 1)

    def _statement(self, i, end):
        first = self._next(i)
        self._copy(i, min(first, end))
        if first >= end:
            return end
        i = first
        if self._is(i, '{'):
            self._block(i)
            return self.partner[i] + 1
        if self._is(i, 'if', 'while', 'switch', 'for', 'catch'):
            return self._control(i, end)
        if self._is(i, 'else', 'do', 'try'):
            self._copy(i, i + 1)
            return self._statement(i + 1, end)
        if self._is(i, 'case', 'default'):
            colon = self._to(i, end, ':')
            self._copy(i, colon + 1)
            return colon + 1
        semicolon = self._to(i, end, ';')
        if semicolon == end:
            self._copy(i, end)
            return end
        behind = semicolon + 1
        line = self.tokens[i].line
        if self._is(i, 'break', 'continue'):
            self._chain(i, behind, [(line, f'{self.tokens[i].text} removed', '')],
                        lambda: self._copy(i, behind))
        elif self._is(i, 'return'):
            self._return(i, semicolon)
        elif self._is(i, 'static_assert', 'using', 'typedef', 'constexpr', 'static', 'struct', 'class', 'enum'):
            self._copy(i, behind)
        elif semicolon == i:
            self._copy(i, behind)
        elif self._declares(i, semicolon):
            self._declaration(i, semicolon)
        else:
            changes = [(l, c, t + ';') for l, c, t in self._changes(i, semicolon)]
            changes.append((line, 'statement removed', ''))
            self._chain(i, behind, changes, lambda: self._expression(i, behind))
        return behind

    def _return(self, i, semicolon):
        value = self._next(i + 1)
        if value >= semicolon:
            self._chain(i, semicolon + 1, [(self.tokens[i].line, 'return removed', '')],
                        lambda: self._copy(i, semicolon + 1))
            return
        line = self.tokens[i].line
        changes = [(l, c, f'return {t};') for l, c, t in self._changes(value, semicolon)]
        text = self._raw(value, semicolon)
        if text not in ('0', 'false', 'FALSE', 'nullptr', '{}', 'true', 'TRUE'):
            changes.append((line, 'returns nothing', 'return {};'))
        if any(self.tokens[k].text in COMPARISONS and self.tokens[k - 1].kind == 'space'
               for k in range(value, semicolon)) and not self._has_lambda(value, semicolon):
            changes.append((line, 'result negated', f'return !({text});'))
        self._chain(i, semicolon + 1, changes, lambda: self._expression(i, semicolon + 1))

    def _declares(self, i, semicolon):
        """Two names beside each other declare something."""
        if self._is(i, 'const', 'auto', 'unsigned'):
            return True
        if self._is(i, 'delete', 'throw', 'new', 'goto'):
            return False
        names, joined = 0, False
        while i < semicolon and not self._is(i, '=', '(', '{', '[', '+=', '-=', '++', '--', '|=', '<<='):
            token = self.tokens[i]
            if self._is(i, '<') and self.tokens[i - 1].kind != 'space':  # a template's arguments
                depth = 0
                while i < semicolon:
                    depth += {'<': 1, '>': -1}.get(self.tokens[i].text, 0)
                    if depth == 0:
                        break
                    i = self.partner[i] if self._is(i, '(', '[', '{') else i
                    i += 1
            elif token.kind == 'word':
                names += not joined
                joined = False
            elif self._is(i, '::', '.', '->'):
                joined = True
            i += 1
        return names >= 2

    def _declaration(self, i, semicolon):
        equals = self._to(i, semicolon, '=')
        if equals < semicolon:
            comma = self._to(equals, semicolon, ',')
            self._copy(i, equals + 1)
            self._value(equals + 1, comma)
            self._expression(comma, semicolon + 1)
        else:
            self._expression(i, semicolon + 1)

    def _control(self, i, end):
        """if, while, for and switch, up to the end of what they govern."""
        word = self.tokens[i].text
        open_ = self._next(i + 1)
        fixed = word == 'if' and self._is(open_, 'constexpr')
        if fixed:
            open_ = self._next(open_ + 1)
        close = self.partner[open_]
        self._copy(i, open_ + 1)
        if fixed or word in ('switch', 'catch'):
            self._copy(open_ + 1, close)
        elif word == 'for':
            first = self._to(open_ + 1, close, ';')
            if first == close:  # over a range
                self._copy(open_ + 1, close)
            else:
                second = self._to(first + 1, close, ';')
                if self._declares(self._next(open_ + 1), first):
                    self._declaration(open_ + 1, first)
                else:
                    self._copy(open_ + 1, first + 1)
                self._value(first + 1, second, condition=True)
                self._expression(second, close)
        else:
            first = self._next(open_ + 1)
            if self._to(first, close, '=') < close and self._declares(first, close):
                equals = self._to(first, close, '=')
                self._copy(open_ + 1, equals + 1)
                self._value(equals + 1, close)
            else:
                self._value(open_ + 1, close, condition=True)
        self._copy(close, close + 1)
        if word == 'while' and self._is(self._next(close + 1), ';'):  # of do
            semicolon = self._next(close + 1)
            self._copy(close + 1, semicolon + 1)
            return semicolon + 1
        after = self._statement(close + 1, end)
        following = self._next(after)
        if word == 'if' and following < end and self._is(following, 'else'):
            self._copy(after, following + 1)
            after = self._statement(following + 1, end)
        return after

    # ---- namespaces, classes, functions ----

    def _scope(self):
        i, header = 0, 0
        while i < len(self.tokens):
            if self._is(i, '{'):
                words = {self.tokens[k].text for k in range(header, i) if self.tokens[k].kind == 'word'}
                inside = self._to(header, i, '=')
                if 'enum' in words or (inside < i and 'operator' not in words):
                    self._copy(i, self.partner[i] + 1)
                    i = self.partner[i] + 1
                    continue
                if words & {'namespace', 'extern'} or (words & {'class', 'struct', 'union'} and
                                                       not self._is(self._before(i), ')', 'const', 'override')):
                    self._copy(i, i + 1)
                    i = header = i + 1
                    continue
                if any(self._is(k, '(') for k in range(header, i)):
                    self._block(i)
                    i = header = self.partner[i] + 1
                    continue
                self._copy(i, self.partner[i] + 1)
                i = self.partner[i] + 1
                continue
            if self._is(i, '('):
                self._copy(i, self.partner[i] + 1)
                i = self.partner[i] + 1
                continue
            self._copy(i, i + 1)
            if self._is(i, ';', '}') or self.tokens[i].kind == 'pp':
                header = i + 1
            i += 1
