"""The changes that mutate.py makes: every place of a source where one would not be seen by reading."""

import re

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      |(?P<directive>^[ \t]*\#[^\n]*)
      |(?P<checked>\b(?:static_assert|assert)\s*\([^;]*;)
      |(?P<string>"(?:\\.|[^"\\])*")
      |(?P<char>'(?:\\.|[^'\\])')
      |(?P<number>\b\d+[uUlL]*\b)
      |(?P<word>[A-Za-z_]\w*)
      |(?P<operator><<|>>|->|\+\+|--|<=|>=|==|!=|&&|\|\||\+=|-=|[-+*/<>!=(){}\[\],;?:&|.])""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

REPLACED = {
    "==": ["!="], "!=": ["=="], "<=": ["<", ">"], ">=": [">", "<"], "&&": ["||"], "||": ["&&"],
    "++": ["--"], "--": ["++"], "+=": ["-="], "-=": ["+="],
    "true": ["false"], "false": ["true"], "prefix": ["exact"], "exact": ["prefix"],
}


class Mutant:
    def __init__(self, file, start, end, new, text):
        self.file, self.start, self.end, self.new = file, start, end, new
        self.old = text[start:end]
        self.line = text.count("\n", 0, start) + 1
        first = text.rfind("\n", 0, start) + 1
        last = text.find("\n", end)
        self.context = " ".join((text[first:start] + "{{" + self.old + " -> " + new + "}}"
                                 + text[end:last]).split())

    def applied(self, text):
        return text[:self.start] + self.new + text[self.end:]

    def __str__(self):
        return f"{self.file}: {self.context}"


def changed_string(text):
    inside = text[1:-1]
    if not inside:
        return '"x"'
    middle = next((i for i, c in enumerate(inside) if c.isalpha()), None)
    if middle is None or "\\" in inside:
        return '"' + inside + 'x"'
    return '"' + inside[:middle] + inside[middle].swapcase() + inside[middle + 1:] + '"'


def is_spaced(text, match):
    """A binary operator, as this project writes them: a space on both sides."""
    return text[match.start() - 1].isspace() and text[match.end()].isspace()


def arguments(text, start):
    """Spans of the arguments of the call whose "(" is at `start`; none when it is not closed."""
    spans, depth, begin, in_string = [], 0, start + 1, False
    for i in range(start, len(text)):
        c = text[i]
        if c == '"' and text[i - 1] != "\\":
            in_string = not in_string
        if in_string:
            continue
        if c in "({[":
            depth += 1
        elif c in ")}]":
            depth -= 1
        if c == "," and depth == 1:
            spans.append((begin, i))
            begin = i + 1
        if depth == 0:
            return spans + [(begin, i)]
        if c == ";":
            return []
    return []


def is_declaration(argument):
    return re.search(r"^(const )?[\w:]+[*&]? [*&]?\w+( = \w+)?$|^[\w:]+[*&]?$(?<=[*&])|^const ",
                     " ".join(argument.split())) is not None


# The order of their arguments does not matter.
SYMMETRIC = re.compile(r"\b(memcmp|same|min|max)(<[\w:]+>)?$")


def token_mutants(file, text):
    """Each string, character, number, operator and truth value, and each pair of neighbouring arguments."""
    previous = ""
    for match in TOKEN.finditer(text):
        kind, token = match.lastgroup, match.group(0)
        span = (match.start(), match.end())
        if kind == "string":
            yield Mutant(file, *span, changed_string(token), text)
        elif kind == "char":
            yield Mutant(file, *span, "'x'" if token != "'x'" else "'y'", text)
        elif kind == "number":
            digits = re.match(r"\d+", token).group(0)
            suffix = token[len(digits):]
            yield Mutant(file, *span, str(int(digits) + 1) + suffix, text)
            if int(digits) > 0:
                yield Mutant(file, *span, str(int(digits) - 1) + suffix, text)
            if int(digits) >= 8:
                yield Mutant(file, *span, str(int(digits) // 2) + suffix, text)
        elif token in REPLACED and not (token in ("prefix", "exact") and previous != "::"):
            for new in REPLACED[token]:
                yield Mutant(file, *span, new, text)
        elif token in "<>" and kind == "operator" and is_spaced(text, match):
            yield Mutant(file, *span, token + "=", text)
            yield Mutant(file, *span, ">" if token == "<" else "<", text)
        elif token in ("+", "-", "*", "/") and is_spaced(text, match):
            yield Mutant(file, *span, {"+": "-", "-": "+", "*": "+", "/": "*"}[token], text)
        elif token == "!":
            yield Mutant(file, *span, "", text)
        elif token == "(" and re.match(r"\w|>", text[match.start() - 1]):
            spans = arguments(text, match.start())
            parts = [text[a:b] for a, b in spans]
            if SYMMETRIC.search(text[:match.start()]):
                spans = spans[2:]
            if len(spans) > 1 and not any(is_declaration(part) for part in parts):
                for (a, b), (c, d) in zip(spans, spans[1:]):
                    one, other = text[a:b].strip(), text[c:d].strip()
                    if one != other:
                        yield Mutant(file, a, d, other + ", " + one, text)
        if kind not in ("comment", "directive"):
            previous = "::" if text[match.start():match.start() + 2] == "::" or (
                token == ":" and previous in (":", "::")) else token


# What one could be mistaken for the other and still compiles.
EXCHANGED = {
    "EventFields": "AnswerFields", "AnswerFields": "EventFields",
    "numberOfText": "number", "countOfText": "count",
    "sendRequest": "sendRequestTimed", "front": "back", "begin": "end", "find": "rfind",
}
NARROWER = {
    "size_t": "uint16_t", "uint32_t": "uint16_t", "int64_t": "int32_t", "int": "short", "long": "int",
}
# A whole statement that may be forgotten.
STATEMENT = re.compile(
    r"""^(?P<indent>[ ]{4,})(?P<text>
        (?:const\ )?(?:std::(?:lock_guard|scoped_lock|unique_lock)|State::Lock)\b[^;{}]*;  # a lock
      | [\w.>()-]*notify_(?:one|all)\(\);                                 # a notification
      | throw\b[^;{}]*;                                                   # a throw, a refusal
      | return\b[^;{}]*;                                                  # an early return
      | (?!return|throw|case|else|break|delete)[\w:]+(?:(?:\.|->|::)\w+)*\([^;{}]*\);  # a call
    )$""", re.VERBOSE | re.MULTILINE)
MEMBER = re.compile(r"^ {4}(?!return|using|const )[\w:<>*, ]+? \w+(?P<value> = [^;(){}]+|\{[^;{}]*\});",
                    re.MULTILINE)
ROW = re.compile(r"^(?P<indent> +)(?P<row>\{\"[^\n]*\},|\.\w+\(\"[^\n]*\))\n"
                 r"(?P=indent)(?P<next>\{\"[^\n]*\},|\.\w+\(\"[^\n]*\))$", re.MULTILINE)
STRING = re.compile(r'"[A-Za-z_]\w*"')
# An argument that stands for itself: what if it were cut at its first zero byte?
NAMED = re.compile(r"(?:(?<=\()|(?<=, ))(?P<name>[a-z]\w*)(?=\)|, )")
DECLARED_TEXT = re.compile(r"const std::string& (\w+)(?=[,)])")
NARROWED = re.compile(r"\b(?P<type>size_t|uint32_t|int64_t|int|long)(?= \w+(?: =|\{|;)|>\()")


def code_of(text):
    """The text with comments, directives and assertions blanked out, everything else in its place."""
    return TOKEN.sub(lambda match: re.sub(r"[^\n]", " ", match.group(0))
                     if match.lastgroup in ("comment", "directive", "checked") else match.group(0), text)


def field_mutants(file, text):
    """Faults of this field: fields and rows swapped, readers exchanged, texts cut, integers narrowed,
    statements and first values forgotten."""
    code = code_of(text)
    strings = list(STRING.finditer(code))
    for one, other in zip(strings, strings[1:]):
        between = text[one.end():other.start()]
        if len(between) < 120 and one.group(0) != other.group(0) and "||" not in between:
            yield Mutant(file, one.start(), other.end(), other.group(0) + between + one.group(0), text)
    for match in re.finditer(r"\b\w+\b", code):
        word = match.group(0)
        if word in EXCHANGED:
            yield Mutant(file, match.start(), match.end(), EXCHANGED[word], text)
    for match in NARROWED.finditer(code):
        yield Mutant(file, *match.span("type"), NARROWER[match.group("type")], text)
    for match in STATEMENT.finditer(code):
        before = code[:match.start()].rstrip()
        if match.group("text").startswith("return") and not before.endswith((")", "{")):
            continue  # the last one of a function: it does not compile, or means nothing
        yield Mutant(file, match.start("text"), match.end("text"), ";", text)
    for match in MEMBER.finditer(code):
        yield Mutant(file, match.start("value"), match.end("value"), "", text)
    for match in ROW.finditer(code):
        # The order of the library's own tables does not matter, nor that of the calls by name.
        if not re.search(r"Match::|sfi|run<", match.group("row")):
            yield Mutant(file, match.start("row"), match.end("next"),
                         match.group("next") + "\n" + match.group("indent") + match.group("row"), text)
    texts = set(DECLARED_TEXT.findall(code))
    for match in NAMED.finditer(code):
        if match.group("name") in texts:
            yield Mutant(file, *match.span("name"), match.group("name") + ".c_str()", text)


def mutants_of(file, text):
    seen = set()
    for mutant in (*token_mutants(file, text), *field_mutants(file, text)):
        place = mutant.start, mutant.end, mutant.new
        if place not in seen:
            seen.add(place)
            yield mutant
