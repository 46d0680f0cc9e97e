"""Reads include/kest/*.h for the reference: what is declared there, and what its comments say.

A comment is prose, whose first sentence is the purpose, and fields, which stand in a table:

    // Appends count bytes. Returns count; 0 when the block cannot grow.
    //   source   the bytes; not null when count is above 0
    //   Cost     linear in the bytes that the queue holds

A field in lower case describes the parameter of that name (or several, "param1, param2"); one with
a capital is a rule: Result, Failure, Threads, Blocking, Cost, Ownership, Width, Example, See. What
a declaration leaves unsaid is taken from the section it stands in (a comment with an empty line
below it), from its class, from the member it overrides, from the header. Further,

  - a sentence that begins with a parameter's name describes it;
  - a sentence that begins with Returns, True, False, Null, 0 and the like is the result, and so is
    the purpose where it names a thing ("The number of elements.");
  - one comment holds for all declarations that follow it without an empty line;
  - lines indented by five or more are kept as they are.
"""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
HEADERS = ["frame", "string", "text", "collections", "file", "thread", "message", "crypto", "digest", "kest", "export"]
RULES = ["Failure", "Ownership", "Threads", "Blocking", "Cost", "Width"]
FIELD = re.compile(r"   (\.\.\.|[A-Za-z_]\w*(?:(?:, | )[\w.]+){0,3})  +(\S.*)")
RESULT = re.compile(r"(Returns|True|False|Null|Gives|Always|It returns|They return|The results?|Results|-?\d+)\b")
WIDE = re.compile(r"\b(size_t|time_t|pthread_key_t|(?<!long )(?<!unsigned )long(?! long))\b")
NAMES = set()  # of everything that has a page; load fills it
VERB = re.compile(r"(?!Units|Bytes|Words|Bits|Parts|Whether|Always|This)[A-Z]\w*s\b")


def sentences(text):
    return re.split(r"(?<=\.)\s+(?=\S)", text) if text else []


class Comment:
    """paragraphs: texts, or lists of lines kept as they are. fields: name to text."""

    def __init__(self, lines=()):
        self.paragraphs, self.fields, self.odd = [], {}, []
        name = paragraph = None
        for line in lines:
            field = FIELD.fullmatch(line)
            if not line.strip():
                name = paragraph = None
            elif name and line.startswith("     "):
                for key in name:
                    self.fields[key] += " " + line.strip()
            elif field:
                name, paragraph = field[1].split(", "), None
                for key in name:
                    self.fields[key] = field[2].strip()
            elif line.startswith("     "):
                if not isinstance(paragraph, list):
                    paragraph = []
                    self.paragraphs.append(paragraph)
                paragraph.append(line[5:])
                name = None
            else:
                if re.match(r"  +\S", line):
                    self.odd.append(line)
                name = None
                if isinstance(paragraph, str):
                    self.paragraphs[-1] = paragraph = paragraph + " " + line.strip()
                else:
                    paragraph = line.strip()
                    self.paragraphs.append(paragraph)
        self.paragraphs = [p for p in self.paragraphs if isinstance(p, list) or not p.startswith("True of all")]

    def __bool__(self):
        return bool(self.paragraphs or self.fields)

    @property
    def purpose(self):
        first = self.paragraphs[0] if self.paragraphs and isinstance(self.paragraphs[0], str) else ""
        return re.split(r"(?<=\.)\s+", first)[0]


class Scope:
    """A header, a section of it, or a class. Rules that a member does not have are looked up here."""

    def __init__(self, kind, name, comment, parent, header):
        self.kind, self.name, self.comment, self.parent, self.header = kind, name, comment, parent, header
        self.items, self.bases, self.line = [], [], 0

    def chain(self):
        scope = self
        while scope:
            yield scope
            scope = scope.parent


class Item:
    """One declaration, of the kind function, variable, type, macro or deleted."""

    def __init__(self, kind, name, text, comment, scope, access, line):
        self.kind, self.name, self.text, self.comment = kind, name, text, comment
        self.scope, self.access, self.line = scope, access, line
        self.parameters, self.type, self.trailing, self.overridden = [], "", "", None
        self.header = scope.header
        self.siblings = []

    @property
    def owner(self):
        return next((s for s in self.scope.chain() if s.kind == "class"), None)

    @property
    def special(self):
        """A constructor or a destructor, which have no result."""
        return self.owner and self.name.split("::")[-1].lstrip("~") == self.owner.name.split("::")[-1]

    def lookup(self, key, own=True):
        """A field of this declaration, or of the nearest scope that has it."""
        if own and key in self.comment.fields:
            return self.comment.fields[key]
        for scope in self.scope.chain():
            if scope.kind == "class" and self.overridden:
                found = self.overridden.lookup(key) if not (key in scope.comment.fields) else None
                if found:
                    return found
            if key in scope.comment.fields:
                return scope.comment.fields[key]
            if scope.kind == "class":
                bases = list(scope.bases)
                while bases:
                    base = bases.pop(0)
                    bases += base.bases
                    if key in base.comment.fields:
                        return base.comment.fields[key]
        return None

    # What the page says.

    @property
    def spoken(self):
        """The comment that speaks: its own, or that of the member it overrides."""
        if not self.comment.paragraphs and self.overridden:
            return self.overridden.spoken
        return self.comment

    @property
    def purpose(self):
        return self.spoken.purpose

    def sort_out(self):
        """Deals the sentences of the prose to parameters, result and description."""
        names = [name for _, name in self.parameters]
        about, result, rest = {}, [], []
        told = self.type not in ("", "void") and "Result" not in self.spoken.fields
        for number, paragraph in enumerate(self.spoken.paragraphs):
            if isinstance(paragraph, list):
                rest.append(paragraph)
                continue
            kept = []
            for index, sentence in enumerate(sentences(paragraph)):
                first = re.match(r"[A-Za-z_]\w*", sentence)
                if first and first[0] in names:
                    about.setdefault(first[0], []).append(re.sub(r"^\w+: ", "", sentence))
                elif told and RESULT.match(sentence) and not (number == 0 and index == 0):
                    result.append(sentence)
                elif not (number == 0 and index == 0):
                    kept.append(sentence)
            if kept:
                rest.append(" ".join(kept))
        return about, result, rest

    def parameter(self, name):
        if name in self.comment.fields:
            return self.comment.fields[name]
        about = self.sort_out()[0]
        return " ".join(about[name]) if name in about else self.lookup(name, own=False)

    @property
    def result(self):
        if self.special or self.type in ("", "void"):
            return None
        found = self.sort_out()[1]
        if "Result" in self.comment.fields or not found and self.scope.comment.fields.get("Result"):
            return self.lookup("Result")
        if found:
            return " ".join(found)
        purpose = self.purpose
        return purpose if purpose and (RESULT.match(purpose) or not VERB.match(purpose)) else self.lookup("Result")

    @property
    def description(self):
        """The prose without the purpose, then that of the section."""
        found = list(self.sort_out()[2])
        for scope in [self.scope]:
            if scope.kind == "section":
                found += scope.comment.paragraphs
                found += [f"{key}: {text[0].upper()}{text[1:]}" for key, text in scope.comment.fields.items()
                          if key[0].isupper() and key not in RULES + ["Example", "Result", "See"]]
        return found

    @property
    def rules(self):
        """Pairs of a rule and its text. What a class says of its width is for its own page, unless
        a type in the declaration has two."""
        for rule in RULES:
            if rule != "Width" or rule in self.comment.fields or rule in self.scope.comment.fields and \
                    self.scope.kind == "section" or WIDE.search(self.text):
                if self.lookup(rule):
                    yield rule, self.lookup(rule)

    @property
    def see(self):
        names = [s.name for s in self.siblings if s.name != self.name]
        for name in (n.strip() for n in (self.lookup("See") or "").split(",")):
            names += ["KEST::" + name if "KEST::" + name in NAMES else name] if name else []
        if self.owner:
            names.append(self.owner.name)
        return sorted(set(n for n in names if n != self.name))


def split_parameters(text):
    """The pairs of type and name between a function's parentheses."""
    parts, depth, start = [], 0, 0
    for i, c in enumerate(text + ","):
        depth += c in "(<[" and 1
        depth -= c in ")>]" and 1
        if c == "," and depth == 0:
            parts.append(" ".join(text[start:i].split()))
            start = i + 1
    found = []
    for part in (p for p in parts if p and p != "void"):
        part = part.split(" = ")[0]
        pointer = re.search(r"\(\*(\w+)\)", part)
        plain = re.fullmatch(r"(.*[\s*&])(\w+)", part)
        if part == "...":
            found.append(("...", "..."))
        elif pointer:
            found.append((part, pointer[1]))
        elif plain and plain[2] not in ("int", "char", "short", "bool", "void"):
            found.append((plain[1].strip(), plain[2]))
        else:
            found.append((part, ""))
    return found


def declaration(text, comment, scope, access, namespace, line):
    """An Item of one declaration, whose text is without its comments and body."""
    flat = " ".join(text.split())
    prefix = (scope_class(scope).name if scope_class(scope) else namespace)
    prefix = prefix + "::" if prefix else ""
    bare = re.sub(r'\b(KEST_API|virtual|static|explicit|inline|extern "C"|extern|typedef|override|noexcept)\b ?', "", flat)
    head = bare.split("(")[0]
    kind = "function"
    if flat.startswith("#define"):
        return Item("macro", re.match(r"#define (\w+)", flat)[1], text, comment, scope, access, line)
    if "using " in flat or flat.startswith(("class ", "friend ")):
        return Item("skipped", flat, text, comment, scope, access, line)
    if flat.startswith(("enum", "struct", "typedef")):
        name = re.search(r"\(\*(\w+)\)", flat) or re.match(r"(?:enum|struct)(?: KEST_API)? ?(\w*)", flat)
        return Item("type", prefix + name[1], text, comment, scope, access, line)
    found = re.match(r"(.*?)((?:operator\s*(?:\[\]|[^\s(]+))|~?\w+)\s*\(", bare)
    if not found or re.match(r"[^(]*\(\*\w+\)", bare) and "(*" in bare[: found.end() + 1]:
        kind = "variable"
        name = re.search(r"\(\*(\w+)\)", bare) or re.search(r"(\w+)(?:\[\w*\])*$", bare.rstrip(";"))
        return Item(kind, prefix + name[1], text, comment, scope, access, line)
    item = Item("deleted" if re.search(r"= delete;?$", flat) else kind, prefix + found[2], text, comment, scope, access, line)
    item.type = found[1].strip()
    rest, depth = bare[found.end():], 1
    for i, c in enumerate(rest):
        depth += c == "("
        depth -= c == ")"
        if depth == 0:
            item.parameters = split_parameters(rest[:i])
            break
    return item


def scope_class(scope):
    return next((s for s in scope.chain() if s.kind == "class"), None)


def read(header, classes):
    """The file's Scope, with everything that is declared in it, and its lines dealt to the items."""
    lines = (ROOT / "include/kest" / (header + ".h")).read_text().split("\n")
    top = Scope("header", f"kest/{header}.h", Comment(), None, header)
    i = 0
    opening = []
    while lines[i].startswith("//"):
        opening.append(lines[i][2:])
        i += 1
    top.comment = Comment(opening)
    out = [("file", top, opening)]
    scope, access, namespace, stack, pending, group = top, "public", "", [], None, []
    c_linkage = False

    def close_group():
        for item in group:
            item.siblings = [other for other in group if other.kind != "deleted"]
        group.clear()

    while i < len(lines):
        line, bare = lines[i], lines[i].strip()
        if bare.startswith("//"):
            close_group()
            block = []
            while lines[i].strip().startswith("//"):
                block.append(lines[i].strip()[2:])
                i += 1
            comment = Comment(block)
            if lines[i].strip() == "":
                while scope.kind == "section":
                    scope = scope.parent
                scope = Scope("section", "", comment, scope, header)
                pending = None
            else:
                pending = comment
            continue
        if not bare or bare.startswith(("#if", "#endif", "#include")) or bare.endswith("_H"):
            close_group()
            pending = None if not bare else pending
            out.append(("line", line))
            i += 1
            continue
        if re.fullmatch(r"(public|protected|private):", bare):
            close_group()
            access = bare[:-1]
            while scope.kind == "section":
                scope = scope.parent
            out.append(("line", line))
            i += 1
            continue
        if bare.startswith("namespace ") or bare.startswith('extern "C" {'):
            while scope.kind == "section":
                scope = scope.parent
            stack.append(("block", namespace, c_linkage, scope, access))
            if bare.startswith("namespace"):
                namespace = bare.split()[1]
            else:
                c_linkage = True
            out.append(("line", line.split("//")[0]))
            i += 1
            continue
        if bare.startswith("}"):
            close_group()
            _, namespace, c_linkage, scope, access = stack.pop()
            out.append(("line", line.split("//")[0]))
            i += 1
            continue
        opened = re.match(r"(class|struct) (?:KEST_API )?(\w+)(?: : public (\w+))? \{$", bare)
        if opened:
            close_group()
            outer = scope_class(scope)
            item = Scope("class", (outer.name if outer else "KEST") + "::" + opened[2], pending or Comment(), outer or top, header)
            item.line, item.access = i + 1, access
            if opened[3]:
                item.bases = [classes["KEST::" + opened[3]]]
            classes[item.name] = item
            stack.append(("class", namespace, c_linkage, scope, access))
            out.append(("class", item, line))
            scope, access, pending = item, "public" if opened[1] == "struct" else "private", None
            i += 1
            continue
        # One declaration: up to its semicolon, or past the braces of its body.
        first, text, trailing = i, [], ""
        depth = 0
        while True:
            code, _, note = lines[i].partition("  // ")
            trailing = trailing or note
            text.append(code)
            depth += code.count("{") - code.count("}")
            i += 1
            ended = code.rstrip().endswith((";", "}"))
            if depth == 0 and (ended or (bare.startswith("#define") and not code.endswith("\\"))):
                break
        full = "\n".join(text)
        head = re.split(r" \{| : ", full, maxsplit=1)[0] if "(" in full and not bare.startswith(("enum", "#")) else full
        item = declaration(head, pending or Comment([trailing] if trailing and not group else []), scope, access, namespace, first + 1)
        item.source = full
        if trailing and pending:
            item.trailing = trailing
        if group and pending is None:
            item.comment = group[0].comment if not trailing or item.kind == "function" else Comment([trailing])
            if trailing and item.kind == "function":
                item.trailing = trailing
        elif trailing and not item.comment and item.kind != "function":
            item.comment = Comment([trailing])
        pending = None
        group.append(item)
        scope_class(scope).items.append(item) if scope_class(scope) else top.items.append(item)
        out.append(("item", item, line))
    return top, out


def key(item):
    return [re.sub(r"^const |\s", "", t) for t, _ in item.parameters]


def load():
    """All headers: their scopes, the classes by name, all items, and what each file consists of."""
    classes, tops, outs, items = {}, {}, {}, []
    for header in HEADERS:
        tops[header], outs[header] = read(header, classes)
        items += [entry[1] for entry in outs[header] if entry[0] == "item"]
    for item in items:
        owner = item.owner
        bases = list(owner.bases) if owner else []
        while bases and item.kind == "function" and not item.special:
            base = bases.pop()
            bases += base.bases
            short = item.name.split("::")[-1]
            same = [o for o in base.items if o.name == f"{base.name}::{short}" and len(o.parameters) == len(item.parameters)]
            if same:
                item.overridden = same[0]
                break
    NAMES.update(i.name for i in items if i.kind not in ("skipped", "deleted"))
    NAMES.update(classes)
    return tops, classes, items, outs


def snippets():
    """Name of a marked part of an example to its file and lines. Markers are lines "//! [name]"; a
    part may have several pieces."""
    found = {}
    for path in sorted((ROOT / "examples").glob("*/*.cpp")):
        name, lines = None, []
        for line in path.read_text().split("\n"):
            marker = re.fullmatch(r"\s*//! \[([\w-]+)\]", line)
            if marker and name is None:
                name, lines = marker[1], []
            elif marker:
                indent = min(len(x) - len(x.lstrip()) for x in lines if x.strip())
                where, before = found.get(name, (path.relative_to(ROOT).as_posix(), []))
                if name != marker[1] or where != path.relative_to(ROOT).as_posix():
                    raise SystemExit(f"{path}: marker [{marker[1]}] inside another part, or of another file")
                found[name] = (where, before + ([""] if before else []) + [x[indent:] for x in lines])
                name = None
            elif name:
                lines.append(line)
        if name:
            raise SystemExit(f"{path}: [{name}] has no end")
    return found


def example(item, parts):
    """The part of an example that a page shows, by name: the one that an Example field names, its
    own or for a constructor that of the class, else the shortest one that calls the function."""
    near = [item.comment, item.scope.comment] if item.special or item.scope.kind == "section" else [item.comment]
    for comment in near:
        if comment.fields.get("Example") in parts:
            return comment.fields["Example"]
    short = re.escape(item.name.split("::")[-1])
    owner = item.owner.name.split("::")[-1] if item.owner else None
    if item.special:
        use = rf"\b{owner}\b"
    elif item.kind != "function":
        use = rf"\b{short}\b"
    elif item.name.endswith("[]"):
        use = r"\w\["
    elif "operator" in short:
        use = re.escape(f" {item.name.split('operator')[1]} ")
    else:
        use = rf"\b{short}\("
    fitting = []
    for name, (path, lines) in parts.items():
        text = "\n".join(lines)
        if re.search(use, text):
            # Members of the same name: the one that speaks of the class wins.
            fitting.append((owner is not None and not re.search(rf"\b{owner}\b", text), len(lines), name))
    fitting.sort()
    if fitting and not fitting[0][0]:
        return fitting[0][2]
    return None


def class_example(scope, parts):
    """The same for the page of a class."""
    if scope.comment.fields.get("Example") in parts:
        return scope.comment.fields["Example"]
    use = re.compile(rf"\b{scope.name.split('::')[-1]}\b")
    fitting = sorted((len(lines), name) for name, (_, lines) in parts.items() if use.search("\n".join(lines)))
    return fitting[0][1] if fitting else None
