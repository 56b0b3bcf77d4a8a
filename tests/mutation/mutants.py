"""Small faults in C++ sources: where one can be put, and what then stands there."""

import collections
import hashlib
import itertools
import random
import re

Mutant = collections.namedtuple("Mutant", "path begin end line kind old new")

TOKEN = re.compile(r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>"(?:\\.|[^"\\\n])*")
  | (?P<letter>'(?:\\.|[^'\\\n])+')
  | (?P<number>(?:0[xX][0-9a-fA-F']+|\d[\d']*(?:\.\d+)?)[uUlLfF]*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<mark><<=|>>=|<=>|->\*|\.\.\.|::|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
""", re.VERBOSE | re.DOTALL | re.MULTILINE)

LEVELS = {"250": "50", "50": "40", "40": "250", "kForce": "kError", "kError": "kWarn", "kWarn": "kForce",
          "kInfo": "kWarn", "kTrace": "kInfo", "kAudit": "kForce"}
COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "|": "&", "&": "|", "<<": ">>", ">>": "<<", "+=": "-=",
              "-=": "+=", "++": "--", "--": "++"}
LOGIC = {"&&": "||", "||": "&&"}
NO_STATEMENT = set("""return if else for while do switch case default break continue goto try catch throw using typedef
    namespace template class struct union enum public private protected const constexpr static auto extern friend virtual
    explicit inline mutable operator delete new static_assert thread_local void bool char int""".split())


class Token:
    def __init__(self, match):
        self.kind = match.lastgroup
        self.text = match.group()
        self.begin, self.end = match.span()


def closing(tokens, opening):
    """Index of the bracket that closes the one at `opening`."""
    pairs = {"(": ")", "[": "]", "{": "}"}
    depth = 0
    for i in range(opening, len(tokens)):
        if tokens[i].text in pairs:
            depth += 1
        elif tokens[i].text in pairs.values():
            depth -= 1
            if depth == 0:
                return i
    return len(tokens) - 1


def changed_texts(text, seed):
    """A line end less or more, and another letter, but none of a conversion or an escape."""
    inside = text[1:-1]
    found = [m.start() for m in re.finditer(r"\\n", inside)]
    if found:
        at = found[0] if len(found) > 1 and inside.startswith("\\n") else found[-1]
        yield "line end", inside[:at] + inside[at + 2:]
    elif "\\" not in inside and len(inside) > 8 and " " in inside:
        yield "line end", inside + "\\n"
    taken = {i for m in re.finditer(r"%[-+ #0-9.]*[a-zA-Z]+|\\.", inside) for i in range(*m.span())}
    letters = [i for i, one in enumerate(inside) if one.isalpha() and i not in taken]
    if letters:
        at = random.Random(seed).choice(letters)
        yield "letter", inside[:at] + inside[at].swapcase() + inside[at + 1:]


def unmutated(tokens):
    """Indices within what has no effect at run time."""
    inside = set()
    for i, token in enumerate(tokens):
        if token.text in ("static_assert", "__attribute__", "alignas") and tokens[i + 1].text == "(":
            inside.update(range(i, closing(tokens, i + 1) + 1))
        if token.text in ("using", "extern"):
            inside.update((i, i + 1))
    return inside


def statement_end(tokens, first):
    """Index of the ";" of the expression statement that begins at `first`; None when it is something else."""
    if tokens[first].text in NO_STATEMENT or (tokens[first].kind != "word" and tokens[first].text not in ("++", "--", "*")):
        return None
    if tokens[first + 1].text not in ("(", ".", "->", "::", "=", "+=", "-=", "[", "++", "--") and tokens[first].kind == "word":
        return None
    i = first
    while i < len(tokens) and tokens[i].text != ";":
        if tokens[i].text in ("default", "delete", "noexcept", "override"):
            return None
        if tokens[i].text in "([{":
            i = closing(tokens, i)
        elif tokens[i].text in ")]}:":
            return None
        elif tokens[i].kind == "word" and tokens[i + 1].kind == "word":
            return None  # a declaration
        i += 1
    return i if i < len(tokens) else None


def mutants_of(path, source):
    """All mutants of one file."""
    tokens = [Token(m) for m in TOKEN.finditer(source) if m.lastgroup != "skip"]
    skipped = unmutated(tokens)
    found = []

    def add(kind, begin, end, new):
        old = source[begin:end]
        if new != old:
            found.append(Mutant(path, begin, end, source.count("\n", 0, begin) + 1, kind, old, new))

    def spaced(token):
        return source[token.begin - 1].isspace() and source[token.end].isspace()

    levels = set()
    for i, token in enumerate(tokens[:-2]):
        text, following = token.text, tokens[i + 1]
        before = tokens[i - 1].text if i > 0 else ";"
        if i in skipped:
            continue
        if text == "KRXLog" and following.text == "(":
            name = i + 4 if tokens[i + 2].text == "level" else i + 2
            levels.add(name)
            if tokens[name].text in LEVELS:
                add("level", tokens[name].begin, tokens[name].end, LEVELS[tokens[name].text])
        if token.kind == "text":
            for kind, inside in changed_texts(text, text):
                add(kind, token.begin, token.end, f'"{inside}"')
        elif token.kind == "number" and i not in levels:
            digits = re.match(r"0[xX][0-9a-fA-F']+|[\d']+", text).group()
            octal = "0" if re.match(r"0\d", digits) else ""
            value = int(digits.replace("'", ""), 8 if octal else 0) + 1
            add("constant", token.begin, token.end, octal + f"{value:{'o' if octal else 'd'}}" + text[len(digits):])
        elif text in ("true", "false"):
            add("constant", token.begin, token.end, "false" if text == "true" else "true")
        elif text in COMPARISONS and spaced(token):
            add("comparison", token.begin, token.end, COMPARISONS[text])
        elif text in LOGIC and spaced(token):
            add("logic", token.begin, token.end, LOGIC[text])
        elif text in ARITHMETIC and (spaced(token) or text in ("++", "--")):
            add("arithmetic", token.begin, token.end, ARITHMETIC[text])
        elif text in ("if", "while") and following.text == "(":
            end = tokens[closing(tokens, i + 1)]
            begin = following.end
            inside = source[begin:end.begin]
            begin += inside.rfind(";") + 1
            add("condition", begin, end.begin, f" !({source[begin:end.begin].strip()})")
        elif text == "return" and following.text != ";":
            last = i + 1
            while tokens[last].text != ";":
                last = closing(tokens, last) + 1 if tokens[last].text in "([{" else last + 1
            begin, end = following.begin, tokens[last].begin
            value = source[begin:end]
            if not value.startswith("{") and value not in ("true", "false", "nullptr"):
                add("return", begin, end, {"0": "-1", "-1": "0"}.get(value, "{}"))
        if before in (";", "{", "}"):
            last = statement_end(tokens, i)
            if last is not None:
                begin, end = token.begin, tokens[last].begin
                add("removal", begin, end, "\n" * source.count("\n", begin, end))
    return found


def in_order(mutants, seed):
    """In the order in which they are tried: at random, and of each kind in turn. A mutant keeps its place while the code
    around it changes."""
    kinds, alike = collections.defaultdict(list), collections.Counter()
    for mutant in sorted(mutants):
        what = (mutant.path, mutant.kind, mutant.old, mutant.new)
        alike[what] += 1
        kinds[mutant.kind].append((hashlib.sha256(repr((seed, what, alike[what])).encode()).digest(), mutant))
    for turn in itertools.zip_longest(*(sorted(kinds[kind]) for kind in sorted(kinds))):
        yield from (place[1] for place in turn if place is not None)
