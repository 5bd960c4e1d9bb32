"""Small faults in C++ text: one operator, constant, condition, call or statement changed at a time.

Nothing here parses C++. The text is cut into tokens, and the code is expected to be formatted as
.clang-format says: a binary operator has a space on both sides, which template brackets, pointers
and references do not have. A change that does not compile costs time and no more.
"""

import re
from typing import Dict, Iterator, List, NamedTuple

TOKEN = re.compile(
    r'''
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
  | (?P<string>(?:u8|[uUL])?R"(?P<raw>[^(\s]*)\(.*?\)(?P=raw)"|(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*")
  | (?P<char>(?:u8|[uUL])?'(?:[^'\\\n]|\\.[^'\n]*)')
  | (?P<number>0[xX][0-9a-fA-F']+[uUlLzZ]*|\d[\d']*(?:\.\d+)?(?:[eE][+-]?\d+)?[uUlLfFzZ]*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark><=>|<<=|>>=|->\*|\.\.\.|::|->|\+\+|--|&&|\|\||[-+*/%&|^=!<>]=|<<|>>|.)
    ''',
    re.VERBOSE | re.DOTALL | re.MULTILINE)

BINARY = {
    '==': ['!='], '!=': ['=='], '<': ['<=', '>='], '<=': ['<', '>'], '>': ['>=', '<='],
    '>=': ['>', '<'], '&&': ['||'], '||': ['&&'], '+': ['-'], '-': ['+'], '*': ['/'], '/': ['*'],
    '%': ['*'], '&': ['|'], '|': ['&'], '^': ['|'], '<<': ['>>'], '>>': ['<<'], '+=': ['-=', '='],
    '-=': ['+=', '='], '*=': ['='], '/=': ['='], '|=': ['&=', '='], '&=': ['|=', '='],
    '^=': ['|='], '<<=': ['>>='], '>>=': ['<<='],
}
WORDS = {'true': 'false', 'false': 'true', 'TRUE': 'FALSE', 'FALSE': 'TRUE', 'front': 'back',
         'back': 'front', 'min': 'max', 'max': 'min', 'starts_with': 'ends_with',
         'ends_with': 'starts_with', 'prefix': 'suffix', 'suffix': 'prefix'}
ASSIGNMENTS = {'=', '+=', '-=', '*=', '/=', '%=', '|=', '&=', '^=', '<<=', '>>='}
# No statement that can be left out begins with one of these.
KEYWORDS = {'return', 'if', 'else', 'for', 'while', 'do', 'switch', 'case', 'default', 'goto',
            'using', 'namespace', 'class', 'struct', 'enum', 'template', 'typedef', 'public',
            'private', 'protected', 'static_assert', 'assert', 'const', 'constexpr', 'static',
            'inline', 'extern', 'explicit', 'virtual', 'operator', 'friend', 'auto', 'try',
            'catch', 'throw', 'delete', 'new'}
CLOSING = {'(': ')', '[': ']', '{': '}'}
# What an operand of `&&` or `||` ends at.
LIMITS = {',', ';', '?', ':', '&&', '||', 'return', '{', '}'} | ASSIGNMENTS
CONSTANT = re.compile(r'\bconstexpr ([\w:<> ]+?) (k[A-Z]\w*)\b')
FUNCTION = re.compile(r'^ *(?:static |inline |constexpr )*([\w:][\w:<>*& ]*?)[ ]([a-z]\w*)\(([^()]*)\)[\w ]* \{',
                      re.MULTILINE)
PLAIN_ARGUMENT = re.compile(r'[&*]?[A-Za-z_]\w*(?:(?:\.|->|::)\w+)*(?:\(\))?')


class Token(NamedTuple):
    kind: str
    text: str
    start: int

    @property
    def end(self) -> int:
        return self.start + len(self.text)


class Mutation(NamedTuple):
    """Replaces text[start:end]."""
    start: int
    end: int
    replacement: str


def tokens_of(text: str) -> List[Token]:
    return [Token(m.lastgroup if m.lastgroup != 'raw' else 'string', m.group(), m.start())
            for m in TOKEN.finditer(text) if m.group('skip') is None]


def matching(tokens: List[Token], opening: int) -> int:
    """Index of the token that closes the bracket at `opening`, or of the last token."""
    depth = 0
    for i in range(opening, len(tokens)):
        if tokens[i].kind == 'mark':
            if tokens[i].text in CLOSING:
                depth += 1
            elif tokens[i].text in CLOSING.values():
                depth -= 1
                if depth == 0:
                    return i
    return len(tokens) - 1


def number_mutations(token: Token) -> Iterator[Mutation]:
    digits, suffix = re.fullmatch(r"(0[xX][0-9a-fA-F']+|[\d'.eE+-]+?)([uUlLfFzZ]*)",
                                  token.text).groups()
    if '.' in digits or 'e' in digits.lower() and not digits.lower().startswith('0x'):
        yield Mutation(token.start, token.end, f'{float(digits) + 1}{suffix}')
        return
    plain = digits.replace("'", '')
    value = int(plain, 8 if re.fullmatch('0[0-7]+', plain) else 0)
    for changed in (value + 1, value - 1):
        if changed >= 0:
            text = hex(changed) if plain.lower().startswith('0x') else str(changed)
            yield Mutation(token.start, token.end, text + suffix)


def is_shift_of_size(tokens: List[Token], i: int) -> bool:
    """Whether the token is the operator of a size such as `64 << 10`."""
    return (0 < i < len(tokens) - 1 and tokens[i].text == '<<' and
            tokens[i - 1].kind == 'number' and tokens[i + 1].text in ('10', '20', '30'))


def token_mutations(text: str, tokens: List[Token], i: int) -> Iterator[Mutation]:
    token = tokens[i]
    previous = tokens[i - 1].text if i > 0 else ''
    if is_shift_of_size(tokens, i):
        # The size is one constant.
        start, end = tokens[i - 1].start, tokens[i + 1].end
        for change in ('+ 1', '- 1'):
            yield Mutation(start, end, f'(({text[start:end]}) {change})')
    elif is_shift_of_size(tokens, i - 1) or is_shift_of_size(tokens, i + 1):
        return
    elif token.kind == 'number':
        yield from number_mutations(token)
    elif token.kind == 'word' and token.text in WORDS:
        yield Mutation(token.start, token.end, WORDS[token.text])
    elif token.kind == 'char':
        yield Mutation(token.start, token.end, "'?'" if token.text != "'?'" else "'!'")
    elif token.kind == 'string' and '"' in token.text and 'R"' not in token.text:
        if previous != 'extern' and not token.text.endswith('""'):
            yield Mutation(token.start, token.end, token.text[:token.text.index('"')] + '""')
    elif token.kind == 'mark' and previous != 'operator':
        spaced = text[token.start - 1].isspace() and text[token.end:token.end + 1].isspace()
        if spaced:
            for other in BINARY.get(token.text, []):
                yield Mutation(token.start, token.end, other)
        elif token.text == '!' or token.text == '~' and (previous in ASSIGNMENTS or previous in '(&|'):
            yield Mutation(token.start, token.end, '')
        elif token.text in ('++', '--'):
            yield Mutation(token.start, token.end, '--' if token.text == '++' else '++')


def condition_mutations(text: str, tokens: List[Token], i: int) -> Iterator[Mutation]:
    """Changes of the condition of an `if` or `while` at token `i`."""
    if i + 1 >= len(tokens) or tokens[i + 1].text != '(':
        return
    last = matching(tokens, i + 1)
    inside = tokens[i + 2:last]
    # A condition that declares something is left alone.
    if not inside or any(t.text == ';' or t.text == '=' for t in inside):
        return
    start, end = inside[0].start, inside[-1].end
    condition = text[start:end]
    if condition in ('true', 'false'):
        return
    # Changing the operator negates a comparison.
    if not any(t.text == '!' or t.text in BINARY for t in inside):
        yield Mutation(start, end, f'!({condition})')
    yield Mutation(start, end, f'false && ({condition})')
    if tokens[i].text == 'if':
        yield Mutation(start, end, f'true || ({condition})')
    if any(is_call(tokens, at) for at in range(i + 2, last)):
        # The call is made, and its result ignored.
        yield Mutation(start, end, f'({condition}) && false')


def is_call(tokens: List[Token], i: int) -> bool:
    return (tokens[i].kind == 'word' and tokens[i].text not in KEYWORDS and
            i + 1 < len(tokens) and tokens[i + 1].text == '(')


def operand_limit(tokens: List[Token], i: int, step: int) -> int:
    """Index of the token beside the operand on one side of the operator at `i`."""
    depth = 0
    opening, closing = (set(CLOSING), set(CLOSING.values()))[::step]
    while True:
        i += step
        if i < 0 or i >= len(tokens) or depth == 0 and tokens[i].text in LIMITS | closing:
            return i
        if tokens[i].kind == 'mark':
            depth += (tokens[i].text in opening) - (tokens[i].text in closing)


def conjunct_mutations(text: str, tokens: List[Token], i: int) -> Iterator[Mutation]:
    """Leaves out one of the two operands of the operator at `i`, or the result of the first."""
    first, last = operand_limit(tokens, i, -1) + 1, operand_limit(tokens, i, 1) - 1
    if not first < i < last:
        return
    start, end = tokens[first].start, tokens[last].end
    yield Mutation(start, tokens[i + 1].start, '')
    yield Mutation(tokens[i - 1].end, end, '')
    if any(is_call(tokens, at) for at in range(first, i)):
        before, after = text[start:tokens[i - 1].end], text[tokens[i + 1].start:end]
        yield Mutation(start, end, f'(({before}), ({after}))')


def argument_mutations(text: str, tokens: List[Token], i: int) -> Iterator[Mutation]:
    """Swaps two arguments of the call at token `i`."""
    last = matching(tokens, i + 1)
    starts = [i + 2]
    depth = 0
    for at in range(i + 2, last):
        depth += (tokens[at].text in CLOSING) - (tokens[at].text in CLOSING.values())
        if depth == 0 and tokens[at].text == ',':
            starts.append(at + 1)
    ends = [at - 1 for at in starts[1:]] + [last]
    spans = [(tokens[s].start, tokens[e - 1].end) for s, e in zip(starts, ends) if s < e]
    for (start, middle), (follow, end) in zip(spans, spans[1:]):
        one, other = text[start:middle], text[follow:end]
        if one != other and PLAIN_ARGUMENT.fullmatch(one) and PLAIN_ARGUMENT.fullmatch(other):
            yield Mutation(start, end, other + text[middle:follow] + one)


def siblings_of(text: str) -> Dict[str, str]:
    """For each constant and function of a file another one of the same type."""
    groups: Dict[tuple, List[str]] = {}
    for found in CONSTANT.finditer(text):
        groups.setdefault((found[1],), []).append(found[2])
    for found in FUNCTION.finditer(text):
        parameters = tuple(re.sub(r'\s*\b\w+$', '', p.strip()) for p in found[3].split(','))
        if found[1] not in KEYWORDS | {'else'}:
            groups.setdefault((found[1], parameters), []).append(found[2])
    others = {}
    for names in groups.values():
        names = list(dict.fromkeys(names))
        others.update(zip(names, names[1:] + names[:1]))
    return {name: other for name, other in others.items() if name != other}


def sibling_mutations(tokens: List[Token], i: int, others: Dict[str, str]) -> Iterator[Mutation]:
    """Replaces the name at token `i` by that of another constant or function of the same type."""
    token = tokens[i]
    before = tokens[i - 1] if i > 0 else token
    is_defined = before.kind == 'word' and before.text != 'return' or before.text in ('>', '&', '*')
    if token.text in others and not is_defined and (token.text[0] == 'k' or is_call(tokens, i)):
        yield Mutation(token.start, token.end, others[token.text])


def is_expression(tokens: List[Token], first: int, last: int) -> bool:
    """Whether the tokens from `first` to the semicolon at `last` call or assign something."""
    i = first
    while i < last and tokens[i].text in ('*', '++', '--', '::', '(', 'void', ')'):
        if tokens[i].text in ('++', '--'):
            return True
        i += 1
    called = False
    while i < last:
        token = tokens[i]
        if token.kind == 'word' and tokens[i + 1].kind == 'word':
            return False
        if token.text in ASSIGNMENTS or token.text in ('++', '--'):
            return True
        if token.text in ('(', '['):
            called = called or token.text == '('
            i = matching(tokens, i)
        elif token.text == '<<' or token.text == '?':
            return called
        elif token.kind != 'word' and token.text not in ('::', '.', '->'):
            return False
        i += 1
    return called


def statement_mutations(text: str, tokens: List[Token], first: int) -> Iterator[Mutation]:
    """Changes of the statement that begins at token `first`."""
    word = tokens[first].text
    last = first
    while last < len(tokens) and tokens[last].text != ';':
        if tokens[last].text in CLOSING:
            last = matching(tokens, last)
        elif tokens[last].text == '}':
            return
        last += 1
    if last >= len(tokens):
        return
    start, end = tokens[first].start, tokens[last].start
    if word in ('break', 'continue') or word == 'return' and last == first + 1:
        yield Mutation(start, end, '')
    elif word == 'return':
        value = text[tokens[first + 1].start:end]
        if not re.fullmatch(r"\w+|\{\}|std::nullopt", value) or re.fullmatch(r'[a-z]\w*', value) and \
                value not in ('true', 'false', 'nullptr'):
            yield Mutation(start, end, 'return {}')
    elif word not in KEYWORDS and is_expression(tokens, first, last):
        # No result depends on memory that is reserved.
        if not re.search(r'\breserve\w*\(', text[start:end]):
            yield Mutation(start, end, '')


def opens_code(tokens: List[Token], brace: int, outer: bool) -> bool:
    """Whether statements are inside the brace: those of a function, not of a class."""
    i = brace - 1
    words = set()
    while i >= 0 and tokens[i].text not in (';', '{', '}'):
        words.add(tokens[i].text)
        i -= 1
    if words & {'class', 'struct', 'union', 'enum', 'namespace'} and ')' not in words:
        return False
    return outer or ')' in words


def skipped(tokens: List[Token]) -> List[bool]:
    """Marks the tokens of assertions, attributes and alignments."""
    marks = [False] * len(tokens)
    for i, token in enumerate(tokens):
        if token.text in ('static_assert', 'assert', 'alignas', '__attribute__'):
            last = matching(tokens, i + 1)
        elif token.text == '[' and i + 1 < len(tokens) and tokens[i + 1].text == '[':
            last = matching(tokens, i)
        else:
            continue
        marks[i:last + 1] = [True] * (last + 1 - i)
    return marks


def mutations_of(text: str) -> List[Mutation]:
    """All changes of a source file, in the order of their place."""
    tokens = tokens_of(text)
    skip = skipped(tokens)
    others = siblings_of(text)
    found = []
    code = [False]  # for each brace that is open, whether it holds statements
    nested = [0]    # for each, how many parentheses are open inside it
    for i, token in enumerate(tokens):
        if skip[i]:
            continue
        before = tokens[i - 1].text if i > 0 else ''
        if token.text == '{':
            code.append(opens_code(tokens, i, code[-1]))
            nested.append(0)
            continue
        if token.text == '}':
            if len(code) > 1:
                code.pop()
                nested.pop()
            continue
        nested[-1] += {'(': 1, ')': -1}.get(token.text, 0)
        found.extend(token_mutations(text, tokens, i))
        if token.kind == 'word':
            found.extend(sibling_mutations(tokens, i, others))
        if code[-1] and is_call(tokens, i):
            found.extend(argument_mutations(text, tokens, i))
        if token.text in ('&&', '||') and text[token.start - 1].isspace():
            found.extend(conjunct_mutations(text, tokens, i))
        if token.text in ('if', 'while'):
            found.extend(condition_mutations(text, tokens, i))
        starts = before in (';', '{', '}', ')', 'else', 'do') and token.text not in CLOSING.values()
        if code[-1] and nested[-1] == 0 and starts:
            found.extend(statement_mutations(text, tokens, i))
    return sorted(set(found))
