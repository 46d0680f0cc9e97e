#!/usr/bin/env python3
"""Doxygen's input filter: a header with a complete comment for each declaration, or a page of docs.

    filter.py include/kest/NAME.h | PAGE.md
"""

import re
import sys
from pathlib import Path

import headers

LABEL = {"Width": "32 and 64 bits"}


def escape(text):
    text = re.sub(r"([\\@<>&#%*\"`|])", r"\\\1", text)
    text = re.sub(r"(?<![A-Za-z0-9])_|_(?![A-Za-z0-9])", r"\\_", text) if "`" in text else text
    return text.replace("...", "\\...") if text.startswith("...") else text


def prose(paragraphs):
    for paragraph in paragraphs:
        if isinstance(paragraph, list):
            yield "\\verbatim\n" + "\n".join(paragraph) + "\n\\endverbatim"
        else:
            yield escape(paragraph)


def fields(pairs):
    return [f"\\par {LABEL.get(key, key)}\n{escape(text)}" for key, text in pairs]


def see(names):
    for name in names:
        if name.startswith("docs/"):
            yield page_link(name)
        else:
            yield escape(name) + ("()" if "operator" not in name and name in FUNCTIONS else "")


def page_link(name):
    title = next(line[2:] for line in (headers.ROOT / name).read_text().split("\n") if line.startswith("# "))
    return f"[{title}]({name})"


def comment_of(item):
    """The lines of an item's comment, in Doxygen's words."""
    if item.kind == "deleted":
        what = "An object is not copied." if "operator=" not in item.name else "An object is not assigned."
        return [f"\\brief Deleted. {what}"]
    if item.kind != "function":
        found = [f"\\brief {escape(item.purpose)}", *prose(item.spoken.paragraphs[:0]), *prose(rest_of(item.spoken))]
        return found + fields((k, v) for k, v in item.comment.fields.items() if k[0].isupper())
    found = [f"\\brief {escape(item.purpose)}", *prose(item.description)]
    found += [f"\\param {'...' if n == '...' else n} {escape(item.parameter(n) or '')}" for _, n in item.parameters if n]
    if item.result:
        found.append(f"\\return {escape(item.result)}")
    found += fields(item.rules)
    name = headers.example(item, PARTS)
    if name:
        found.append(shown_part(name))
    elif item.lookup("Example"):
        found += fields([("Example", item.lookup("Example"))])
    if item.see:
        found.append("\\see " + ", ".join(see(item.see)))
    return found


def shown_part(name):
    path, lines = PARTS[name]
    return f"\\par Example\nFrom {escape(path)}:\n\\code{{.cpp}}\n" + "\n".join(lines) + "\n\\endcode"


def rest_of(comment):
    if not comment.paragraphs or isinstance(comment.paragraphs[0], list):
        return comment.paragraphs
    first = comment.paragraphs[0][len(comment.purpose):].strip()
    return ([first] if first else []) + comment.paragraphs[1:]


def block(lines, indent=""):
    print(indent + "/**")
    print("\n\n".join(lines))
    print(indent + "*/")


def scope_comment(comment):
    shown = [(k, v) for k, v in comment.fields.items() if k[0].isupper() and k not in ("See", "Example", "Examples")]
    found = [f"\\brief {escape(comment.purpose)}", *prose(rest_of(comment)), *fields(shown)]
    if "See" in comment.fields:
        found.append("\\see " + ", ".join(see(n.strip() for n in comment.fields["See"].split(","))))
    return found


def header(name):
    for entry in OUTS[name]:
        if entry[0] == "file":
            block([f"\\file kest/{name}.h", *scope_comment(entry[1].comment)])
            if name == "kest":
                block(["\\namespace KEST", "\\brief What Kest offers in C++. The functions of its C interface begin with Kest "
                       "or kest_ and are in no namespace."])
        elif entry[0] == "line":
            print(entry[1])
        elif entry[0] == "class":
            part = headers.class_example(entry[1], PARTS)
            block(scope_comment(entry[1].comment) + ([shown_part(part)] if part else []), re.match(r" *", entry[2])[0])
            print(entry[2])
        else:
            item, indent = entry[1], re.match(r" *", entry[2])[0]
            if item.kind != "skipped" and (item.kind != "variable" or item.access != "private"):
                block(comment_of(item), indent)
            pair = re.fullmatch(r"(\s*[\w ]+ )(\w+), (\w+);", item.source)
            if pair:  # Doxygen would give the comment to the first one alone
                print(f"{pair[1]}{pair[2]};")
                block(comment_of(item), indent)
            print(f"{pair[1]}{pair[3]};" if pair else item.source)


def slug(heading):
    return re.sub(r"[^a-z0-9 -]", "", heading.lower()).replace(" ", "-")


def headings(path):
    """The ids of a page's headings, as they are linked to."""
    outside = re.sub(r"```.*?```", "", path.read_text(), flags=re.S)
    return {slug(title): f"{path.stem.lower()}-{slug(title)}" for title in re.findall(r"^##+ (.*)$", outside, re.M)}


def page(path):
    """Headings get ids, which links lead to; links to what is no page of the site become text."""
    here = headers.ROOT if path.parent.name == "reference" else path.parent
    ids = headings(path)

    def link(found):
        text, target = found[1], found[2]
        name, _, part = target.partition("#")
        whole = (here / name).resolve() if name else path
        if re.match(r"(https?:|@ref)", target):
            return found[0]
        if whole == headers.ROOT / "docs/README.md":
            return f"[{text}](@ref guides)"
        if whole.suffix == ".md" and whole.parent in (headers.ROOT, headers.ROOT / "docs", headers.ROOT / "docs/decisions"):
            return f"[{text}](@ref {headings(whole)[part]})" if part else found[0]
        if whole.suffix == ".svg":
            return found[0]
        inside = str(whole.relative_to(headers.ROOT))
        return f"`{inside}`" if text.strip("`") in inside else f"{text} (`{inside}`)"

    fenced = False
    for line in path.read_text().split("\n"):
        fenced ^= line.startswith("```")
        title = re.fullmatch(r"##+ (.*)", line)
        if title and not fenced:
            line += f" {{#{ids[slug(title[1])]}}}"
        if not fenced:
            line = re.sub(r"\[([^\]]+)\]\(([^)\s]+)\)", link, line)
        # Doxygen looks for "new" where it reads "::new", even in code.
        print(line.replace("::new", ":\u2060:new"))


if __name__ == "__main__":
    given = Path(sys.argv[1]).resolve()
    if given.suffix == ".md":
        page(given)
    else:
        _, _, ITEMS, OUTS = headers.load()
        PARTS = headers.snippets()
        FUNCTIONS = {i.name for i in ITEMS if i.kind == "function"}
        header(given.stem)
