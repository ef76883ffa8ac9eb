"""Every change that could be made to a source file, one place at a time."""

import hashlib
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""
    (?P<skipped> //[^\n]* | /\*.*?\*/ | ^[ ]*\#(?:[^\n]*\\\n)*[^\n]* )
  | (?P<raw> [LuU]?R"\(.*?\)" )
  | (?P<text> (?:u8|[LuU])?"(?:\\.|[^"\\\n])*" )
  | (?P<character> [LuU]?'(?:\\.|[^'\\\n])+' )
  | (?P<number> (?:0[xX][0-9A-Fa-f]+ | \d+(?:\.\d+)?) \w* )
  | (?P<name> [A-Za-z_]\w* )
  | (?P<operator> <<=|>>=|->|::|<<|>>|<=|>=|==|!=|&&|\|\||\+\+|--|[-+*/%&|^]=|[-+*/%&|^~!<>=?:;,.(){}\[\]] )
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

# clang-format sets these between blanks exactly when they have two operands.
BINARY = {
    "==": ["!="], "!=": ["=="], "<": ["<=", ">="], ">": [">=", "<="], "<=": ["<", ">"], ">=": [">", "<"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "&": ["|"], "|": ["&"],
    "+=": ["-="], "-=": ["+="], "|=": ["&=", "="], "&=": ["|="],
}

OPPOSITES = {
    "true": "false", "false": "true", "TRUE": "FALSE", "FALSE": "TRUE", "VARIANT_TRUE": "VARIANT_FALSE",
    "SW_SHOW": "SW_HIDE", "SW_HIDE": "SW_SHOW", "HKEY_CURRENT_USER": "HKEY_LOCAL_MACHINE",
    "HKEY_LOCAL_MACHINE": "HKEY_CLASSES_ROOT", "HKEY_CLASSES_ROOT": "HKEY_CURRENT_USER",
    "starts_with": "ends_with", "ends_with": "starts_with", "min": "max", "max": "min",
}

OPENING = {"(": ")", "{": "}", "[": "]"}

# What begins a statement that can't be left out: a declaration, or the head of another statement.
NO_STATEMENT = set(
    "auto case catch class const constexpr default do else enum extern for friend if inline namespace private protected"
    " public static struct switch template try typedef using virtual while".split())


@dataclass
class Token:
    kind: str
    text: str
    start: int

    @property
    def end(self):
        return self.start + len(self.text)


@dataclass
class Change:
    path: str
    kind: str
    start: int
    end: int
    replacement: str
    key: str  # the same as long as the change and what stands around it are
    line: int
    description: str  # "`old` → `new`", the lines that it touches without their layout

    def apply(self, source):
        return source[:self.start] + self.replacement + source[self.end:]


def tokens_of(source):
    return [Token(match.lastgroup, match.group(), match.start())
            for match in TOKEN.finditer(source) if match.lastgroup != "skipped"]


def enumerators_of(source):
    """For each enumerator the next one of its enumeration."""
    following = {}
    for body in re.findall(r"\benum\b[^{;]*\{(.*?)\}", source, re.DOTALL):
        names = [token.text for token in tokens_of(body) if token.kind == "name"]
        if len(names) > 1:
            following.update(zip(names, names[1:] + names[:1]))
    return following


class Source:
    """One file, in tokens, and where its brackets end."""

    def __init__(self, path, text, enumerators):
        self.path = path
        self.text = text
        self.enumerators = enumerators
        self.tokens = tokens_of(text)
        self.closing = self._match_brackets()
        self.excluded = self._find_excluded()

    def _match_brackets(self):
        closing, open_brackets = {}, []
        for index, token in enumerate(self.tokens):
            if token.kind != "operator":
                continue
            if token.text in OPENING:
                open_brackets.append(index)
            elif token.text in OPENING.values() and open_brackets:
                closing[open_brackets.pop()] = index
        return closing

    def _find_excluded(self):
        """The tokens of what the compiler alone looks at, and of an enumeration's own list."""
        excluded = set()
        for index, token in enumerate(self.tokens):
            end = index
            if token.text in ("using", "template", "static_assert", "extern"):
                end = next(later for later in range(index, len(self.tokens)) if self.tokens[later].text in (";", ">", "{"))
            elif token.text == "enum":
                end = next(later for later in range(index, len(self.tokens)) if self.tokens[later].text == "{")
                end = self.closing[end]
            excluded.update(range(index, end + 1 if end > index else index))
        return excluded

    def changes(self):
        found = []
        for index in range(len(self.tokens)):
            if index not in self.excluded:
                found += self._changes_at(index)
        unique = {change.key: change for change in found}
        return list(unique.values())

    def _changes_at(self, index):
        token = self.tokens[index]
        if token.kind == "operator":
            yield from self._operator_changes(index)
        elif token.kind == "number":
            yield from self._number_changes(index)
        elif token.kind in ("text", "raw", "character"):
            yield from self._text_changes(index)
        elif token.kind == "name":
            yield from self._name_changes(index)
        yield from self._removed_statement(index)

    def _between_blanks(self, index):
        token = self.tokens[index]
        return self.text[token.start - 1].isspace() and self.text[token.end].isspace()

    def _operator_changes(self, index):
        token, text = self.tokens[index], self.tokens[index].text
        if text in BINARY and self._between_blanks(index):
            for other in BINARY[text]:
                yield self._replace("operator", index, index, other)
            if text == "|":
                yield self._without_operand(index)
        elif text == "!" or text == "-" and self.tokens[index + 1].kind == "number":
            yield self._replace("operator", index, index, "")
        elif text in ("++", "--"):
            yield self._replace("operator", index, index, "--" if text == "++" else "++")
        elif text == "?":
            yield from self._swapped_branches(index)
        elif text == "<<" and self._between_blanks(index):
            end = self._end_of_operand(index + 1, ("<<",))
            yield self._replace("statement", index, end, "")
        if text in ("(", "{") and index in self.closing:
            yield from self._list_changes(index)

    def _without_operand(self, index):
        end = self._end_of_operand(index + 1, ("|", "&", "=="))
        return self._replace("constant", index, end, "")

    def _end_of_operand(self, index, ending):
        """The last token of the operand that begins there."""
        while True:
            token = self.tokens[index]
            index = self.closing[index] if token.text in OPENING else index
            following = self.tokens[index + 1].text
            if following in ending or following in (";", ",", ")", "}", "]", "?", ":", "&&", "||"):
                return index
            index += 1

    def _swapped_branches(self, index):
        colon = self._end_of_operand(index + 1, (":",)) + 1
        if self.tokens[colon].text != ":":
            return
        end = colon
        while self.tokens[end + 1].text not in (";", ",", ")", "}"):
            end += 1
            end = self.closing[end] if self.tokens[end].text in OPENING else end
        yield self._swap("branches", (index + 1, colon - 1), (colon + 1, end))

    def _list_changes(self, opening):
        """A condition is inverted; neighbours in a list change places; a list's element is left out."""
        before = self.tokens[opening - 1].text if opening else ""
        end = self.closing[opening]
        if before in ("if", "while"):
            if self._needs_inversion(opening + 1, end):
                yield self._replace("condition", opening + 1, end - 1, f"!({self._text_of(opening + 1, end - 1)})")
            return
        elements, first, index = [], opening + 1, opening + 1
        while index < end:
            token = self.tokens[index]
            index = self.closing[index] if token.text in OPENING else index
            if token.text in (",", ";"):
                elements.append((first, index - 1))
                first = index + 1
            index += 1
        if first < end:
            elements.append((first, end - 1))
        if before == "for" or any(last < first for first, last in elements):
            return
        if self.tokens[opening].text == "{" and any(self.tokens[i].text == ";" for i in range(opening, end)):
            return
        if self._declares(elements):
            return
        for left, right in zip(elements, elements[1:]):
            if self._text_of(*left) != self._text_of(*right) and self._may_be_alike(left, right):
                yield self._swap("order", left, right)
        if self.tokens[opening].text == "{" and len(elements) > 1:
            for first, last in elements:
                following = self.tokens[last + 1].text == ","
                yield self._replace("constant", first, last + 1 if following else last, "")

    def _may_be_alike(self, left, right):
        """Not a text and what has no name: they are not of one type."""
        is_text = [first == last and self.tokens[first].kind == "text" for first, last in (left, right)]
        is_name = [first == last and self.tokens[first].kind == "name" and self.tokens[first].text != "nullptr"
                   for first, last in (left, right)]
        return is_text[0] == is_text[1] or is_text[0] and is_name[1] or is_name[0] and is_text[1]

    def _needs_inversion(self, first, end):
        """Whether another operator alone does not invert the condition."""
        texts = {token.text for token in self.tokens[first:end]}
        return bool(texts & {"&&", "||"}) or not texts & {"!", "==", "!="}

    def _declares(self, elements):
        """Whether these are the parameters of a function: a type, and then a name."""
        return any(self.tokens[last].kind == "name" and last > first
                   and (self.tokens[last - 1].kind == "name" or self.tokens[last - 1].text in ("&", "*", ">"))
                   for first, last in elements)

    def _number_changes(self, index):
        digits = re.match(r"0[xX][0-9A-Fa-f]+|[\d.]+", self.tokens[index].text).group()
        suffix = self.tokens[index].text[len(digits):]
        if digits.lower().startswith("0x"):
            yield self._replace("constant", index, index, f"0x{int(digits, 16) ^ 1:X}{suffix}")
        elif "." in digits:
            yield self._replace("constant", index, index, f"{float(digits) + 1}{suffix}")
        else:
            yield self._replace("constant", index, index, f"{int(digits) + 1}{suffix}")
            if int(digits) > 0:
                yield self._replace("constant", index, index, f"{int(digits) - 1}{suffix}")

    def _text_changes(self, index):
        """One character of the text becomes another one, and one is left out."""
        token = self.tokens[index]
        if token.kind == "raw":
            begin, end = token.text.index("(") + 1, len(token.text) - 2
        else:
            quote = '"' if token.kind == "text" else "'"
            begin, end = token.text.index(quote) + 1, len(token.text) - 1
        body = token.text[begin:end]
        if not body:
            yield self._replace("text", index, index, token.text[:begin] + "x" + token.text[end:])
            return
        plain = [match.start() for match in re.finditer(r"\\(?:x[0-9A-Fa-f]+|.)|.", body)
                 if token.kind == "raw" or not match.group().startswith("\\")]
        if not plain:
            return
        for ordinal, edit in enumerate(("change", "remove") if token.kind != "character" else ("change",)):
            place = plain[int(digest(self.path, body, str(index), edit), 16) % len(plain)]
            other = neighbour(body[place]) if edit == "change" else ""
            yield self._replace("text", index, index,
                                token.text[:begin] + body[:place] + other + body[place + 1:] + token.text[end:])

    def _name_changes(self, index):
        name = self.tokens[index].text
        following = self.tokens[index + 1].text if index + 1 < len(self.tokens) else ""
        if name in OPPOSITES:
            yield self._replace("constant", index, index, OPPOSITES[name])
        elif name in self.enumerators and (index == 0 or self.tokens[index - 1].text != "."):
            yield self._replace("constant", index, index, self.enumerators[name])
        elif re.fullmatch(r"[A-Z][A-Z0-9]*(_[A-Z0-9]+)+", name) and following not in ("(", "{") \
                and self.tokens[index + 1].kind != "name" and following not in ("&", "*", "&&"):
            yield self._replace("constant", index, index, f"({name} + 1)")

    def _removed_statement(self, index):
        if not self._begins_statement(index):
            return
        end = index
        while self.tokens[end].text != ";":
            end = self.closing.get(end, end) + 1
            if end == len(self.tokens) or self.tokens[end].text in OPENING.values():
                return
        if not self._is_declaration(self.tokens[index:end]) and not self._ends_function(index, end):
            yield self._replace("statement", index, end, "{}")

    def _ends_function(self, index, end):
        """Whether this returns a function's value at its end, where something must."""
        opening = self._innermost(index)
        return (self.tokens[index].text == "return" and end > index + 1 and self.tokens[end + 1].text == "}"
                and self.tokens[opening - 1].text not in ("else", "do", "try")
                and not (self.tokens[opening - 1].text == ")" and self._follows_head(opening - 1)))

    def _begins_statement(self, index):
        token = self.tokens[index]
        if index == 0 or token.text in NO_STATEMENT or token.text in ("{", "}", ";"):
            return False
        before = self.tokens[index - 1]
        if before.text in (";", "{", "}", "else", ")"):
            return self._in_code(index) and (before.text != ")" or self._follows_head(index - 1))
        return before.text == ":" and self._in_code(index) and self._follows_label(index - 1)

    def _follows_head(self, closing):
        opening = next(first for first, last in self.closing.items() if last == closing)
        return self.tokens[opening - 1].text in ("if", "for", "while", "switch")

    def _follows_label(self, colon):
        index = colon - 1
        while self.tokens[index].kind == "name" or self.tokens[index].text == "::":
            if self.tokens[index].text in ("case", "default"):
                return True
            index -= 1
        return False

    def _in_code(self, index):
        """Whether the innermost brackets around the token are those of a function's body or a block in it."""
        opening = self._innermost(index)
        if self.tokens[opening].text != "{" or opening == 0:
            return False
        before = self.tokens[opening - 1].text
        return before in (")", "]", "else", "do", "try", "const", "noexcept", "override", "mutable", ":")

    def _innermost(self, index):
        """The bracket that opens last before the token and is not closed; else the first token."""
        return max((first for first, last in self.closing.items() if first < index < last), default=0)

    @staticmethod
    def _is_declaration(words):
        if words[0].text in ("return", "throw", "break", "continue", "delete"):
            return False
        depth = 0
        for first, second in zip(words, words[1:]):
            depth += (first.text in ("(", "{", "[")) - (first.text in (")", "}", "]"))
            if depth == 0 and second.kind == "name" and (first.kind == "name" or first.text in ("*", "&", ">", "&&")):
                return True
            if depth == 0 and first.text in ("=", "<<", ".", "->"):
                return False
        return False

    def _text_of(self, first, last):
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def _swap(self, kind, left, right):
        between = self.text[self.tokens[left[1]].end:self.tokens[right[0]].start]
        return self._replace(kind, left[0], right[1], self._text_of(*right) + between + self._text_of(*left))

    def _replace(self, kind, first, last, replacement):
        start, end = self.tokens[first].start, self.tokens[last].end
        around = [token.text for token in self.tokens[max(0, first - 12):last + 13]]
        ordinal = sum(self._looks_alike(first, other) for other in range(first))
        key = digest(self.path, kind, str(ordinal), replacement, str(min(first, 12)), *around)
        return Change(self.path, kind, start, end, replacement, key, self.text.count("\n", 0, start) + 1,
                      self._describe(start, end, replacement))

    def _looks_alike(self, index, other):
        texts = [[token.text for token in self.tokens[max(0, at - 12):at + 13]] for at in (index, other)]
        return self.tokens[index].text == self.tokens[other].text and texts[0] == texts[1]

    def _describe(self, start, end, replacement):
        first = self.text.rfind("\n", 0, start) + 1
        last = self.text.find("\n", end)
        old = self.text[first:last]
        new = self.text[first:start] + replacement + self.text[end:last]
        return f"`{one_line(old)}` → `{one_line(new)}`"


def languages_changes(path, text):
    """Those of the table of languages: neighbours change places, a name loses a letter, a number is off by one."""
    lines = text.split("\n")
    starts = [sum(len(line) + 1 for line in lines[:index]) for index in range(len(lines))]
    rows = [index for index, line in enumerate(lines) if line and not line.startswith("#")]

    def change(kind, row, end, old, new):
        return Change(path, kind, starts[row], end, new, digest(path, kind, old, new), row + 1,
                      f"`{one_line(old)}` → `{one_line(new)}`")

    for row, following in zip(rows, rows[1:] + [None]):
        line = lines[row]
        if following is not None:
            old = line + "\n" + lines[following]
            yield change("order", row, starts[row] + len(old), old, lines[following] + "\n" + line)
        code, identifier, lcid, name = line.split(maxsplit=3)
        end = starts[row] + len(line)
        yield change("constant", row, end, line, line.replace(lcid, str(int(lcid) + 1)))
        yield change("text", row, end, line, line[:-1])


def changes_of(path, text, enumerators):
    if path.endswith(".txt"):
        return list(languages_changes(path, text))
    return Source(path, text, enumerators).changes()


def digest(*texts):
    return hashlib.sha1("\0".join(texts).encode()).hexdigest()[:16]


def neighbour(character):
    if character in "zZ9":
        return {"z": "a", "Z": "A", "9": "0"}[character]
    return chr(ord(character) + 1) if character.isalnum() else "x"


def one_line(text):
    """Without its layout and comments."""
    return " ".join(re.sub(r" // .*", "", text).split())
