"""The changes that are made to lines of code, one at a time, and the mutants that come of them."""
import re
from dataclasses import dataclass


@dataclass(frozen=True)
class Mutant:
    file: str
    number: int  # of the line, from 1 on
    old: str
    new: str

    @property
    def key(self):
        """What stays the same when lines are added above, or the line is indented."""
        return self.file, self.old.strip(), self.new.strip()


# A pattern, and what stands for its group instead. Comparisons and arithmetic have spaces around them, templates and
# pointers have none. What is beside a text joins texts or paths. A loop that counts the wrong way only costs time.
SWAPS = (
    (r" (<=?|>=?|==|!=) ", {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}),
    (r" (&&|\|\|) ", {"&&": "||", "||": "&&"}),
    (r"(?<![\"']) ([-+*/%]) (?![\"'])", {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/"}),
    (r" ([-+|&]=) ", {"+=": "-=", "-=": "+=", "|=": "&=", "&=": "|="}),
    (r"^(?!\s*for ).*?(?:(\+\+|--)(?=\w)|(?<=[\w\])])(\+\+|--))", {"++": "--", "--": "++"}),
    (r" ([&|]) ", {"&": "|", "|": "&"}),
    (r" (<<|>>) (?=\d)", {"<<": ">>", ">>": "<<"}),
    (r"\b(true|false)\b", {"true": "false", "false": "true"}),
    (r"\bstd::(min|max)\b", {"min": "max", "max": "min"}),
)

KEPT = "\x02"  # in what stands there instead: what stood there

TEXTS = re.compile(r'(?P<comment>//[^\n]*|/\*.*?\*/)|R"(?P<mark>\w*)\(.*?\)(?P=mark)"|"(?:\\.|[^"\\\n])*"'
                   r"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])+'", re.DOTALL)
NO_CODE = re.compile(r"\s*(#|static_assert\b|using\b|namespace\b|template\b|friend\b|class\b|struct\b|enum\b)")
NUMBER = re.compile(r"(?<![\w.'\x01])(0[xX][0-9A-Fa-f']+|[0-9][0-9']*)(?=[uUlL]*(?![\w.']))")
# Whether a descriptor is open, and how much is read at a time: that one is 0, or a byte less is read, changes nothing.
FREE = re.compile(r"\.get\(\) (?:<|>=) 0\b|\bstd::array<char, [\d']+>")
CONDITION = re.compile(r"\b(?:if|while) \(")
LOGIC = re.compile(r" (?:<=?|>=?|==|!=|&&|\|\|) |^!")
NOTHING = ("{}", "0", "false", "nullptr", '""', "std::nullopt", "LMAINTE_OK", "kDone", "true")
NOT = re.compile(r"!(?=[\w(:])")
OPTION = re.compile(r'"--[\w-]+", (?:"[^-"][^"]*", )?')
RETURN = re.compile(r"\breturn (.+);$")
BEFORE_STATEMENT = re.compile(r"(?:[;{}:)]|\belse)$")
HEAD = re.compile(r"\s*(?:\} )?(?:else )?(?:(?:if|for|while) (?=\()|else )?")
STATEMENT = re.compile(r"(?:[\w:>.\[\]-]+(?:<[^ ]*>)?(?:\(.*\)[\w.>-]*)*\(.*\)|\*?[\w:.>-]+(?:\[.*?\]|\(.*?\)|[\w.>-])* [-+*/|&^%]?= .*"
                       r"|\*?(?:\+\+|--)[\w.()\[\]>-]+|[\w.()\[\]>-]+(?:\+\+|--)|break|continue|return|throw .*|throw)")
DECLARATION = re.compile(r"(?:explicit )?~?\w+\((?:const |[\w:<>]+ [&*]?\w+[,)=]).*")


def code_of(text):
    """The lines of a text, without comments and with nothing in the quotes. All else stays in its column."""
    def blank(match):
        whole = match.group()
        if match["comment"]:
            return re.sub(r"[^\n]", " ", whole)
        return whole[0] + re.sub(r"[^\n]", "\x01", whole[1:-1]) + whole[-1]
    return TEXTS.sub(blank, text).split("\n")


def closing(code, opening):
    """Where the bracket is closed that is opened there; -1 where this is on another line."""
    depth = 0
    for at in range(opening, len(code)):
        depth += {"(": 1, ")": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return -1


# Each of these gives the changes to a line: from where, to where, and what stands there then. It looks at the code alone.

def is_free(code, at):
    return any(match.start() <= at < match.end() for match in FREE.finditer(code))


def swaps(code, _):
    for pattern, instead in SWAPS:
        for match in re.finditer(pattern, code):
            at = match.lastindex
            if is_free(code, match.start(at)):
                continue
            yield match.start(at), match.end(at), instead[match.group(at)]


def numbers(code, _):
    for match in NUMBER.finditer(code):
        if is_free(code, match.start(1)):
            continue
        digits = match.group(1).replace("'", "")
        base, form = (16, "0x%X") if digits[:2] in ("0x", "0X") else (8, "0%o") if digits[0] == "0" != digits else (10, "%d")
        value = int(digits, base)
        for other in (value + 1, value - 1):
            if other >= 0:
                yield match.start(1), match.end(1), form % other


def negations(code, _):
    for match in CONDITION.finditer(code):
        end = closing(code, match.end() - 1)
        start = max(code.rfind("; ", match.end(), end) + 2, match.end())
        condition = code[start:end]
        operators = LOGIC.findall(condition)
        if end > 0 and " = " not in condition and operators not in (["!"], [" == "], [" != "]):  # these are turned round anyway
            yield start, end, f"!({KEPT})"
    for match in NOT.finditer(code):
        yield match.start(), match.end(), ""


def returns(code, _):
    match = RETURN.search(code)
    if match is None:
        return
    if match.group(1) not in NOTHING:
        yield match.start(1), match.end(1), "{}"
    if LOGIC.search(match.group(1)):
        yield match.start(1), match.end(1), "true"


def options(code, old):
    for match in OPTION.finditer(old):
        if code[match.start()] == '"':
            yield match.start(), match.end(), ""


def is_whole(statement):
    return all(statement.count(left) == statement.count(right) for left, right in ("()", "[]", "{}"))


def removals(code, _):
    """A statement that is a whole line, or all that a condition or a loop on the same line has."""
    head = HEAD.match(code)
    start = head.end()
    under_condition = "if (" in code[:start + 1]
    if start < len(code) and code[start] == "(" and head.group().strip():
        start = closing(code, start) + 2
    if start < 2 and head.group().strip() or not code.endswith(";"):
        return
    statement = code[start:-1]
    if DECLARATION.fullmatch(statement):
        return
    if is_whole(statement) and (STATEMENT.fullmatch(statement) or under_condition and statement.startswith("return ")):
        yield start, len(code), ";"


def mutants_of(file, text):
    """All mutants of a file's text."""
    begins = True
    for number, (old, code) in enumerate(zip(text.split("\n"), code_of(text)), 1):
        code = code.rstrip()
        if not code or NO_CODE.match(code):
            continue
        seen = {old}
        all_rules = (swaps, numbers, negations, returns, options) + ((removals,) if begins else ())
        begins = bool(BEFORE_STATEMENT.search(code))
        for rule in all_rules:
            for start, end, instead in rule(code, old):
                new = old[:start] + instead.replace(KEPT, old[start:end]) + old[end:]
                if new not in seen:
                    seen.add(new)
                    yield Mutant(file, number, old, new)
