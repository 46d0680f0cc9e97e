#!/usr/bin/env python3
"""Every page of the reference says what it has to say; see CONTRIBUTING.md, "A new exported name".

Prints a line for each field that is missing, vague, or names what is not there; exits with 1 then.
"""

import re
import subprocess
import sys

import headers

UNIT = re.compile(r"\b(byte|unit|element|entr|node|bucket|word|bit|millisecond|microsecond|second|character|message|count)", re.I)
SIZES = re.compile(r"n|words|bits|capacity|offset|ms|time|(.*[a-z])?([lL]ength|[lL]en|[sS]ize|[cC]ount)")
problems = []


def say(item, text):
    problems.append(f"include/kest/{item.header}.h:{item.line}: {item.name}: {text}")


def check_function(item, parts, names):
    purpose = item.purpose
    if not purpose.endswith(".") or len(purpose.split()) < 2 and not purpose.startswith("Now"):
        say(item, f"no purpose in one sentence: {purpose!r}")
    if len(purpose) > 130:
        say(item, f"a purpose of {len(purpose)} characters; 130 at most")
    if "~" in item.name and len(item.siblings) > 1:
        say(item, "a destructor shares its comment")
    for kind, name in item.parameters:
        text = item.parameter(name) if name else ""
        if not text:
            say(item, f"nothing about the parameter {name or kind}")
            continue
        if kind.endswith("*") and not re.search(r"\bnull\b", text, re.I):
            say(item, f"may the pointer {name} be null? {text!r}")
        if re.fullmatch(r"(unsigned )?int|long long|long|size_t", kind) and SIZES.fullmatch(name) and not UNIT.search(text):
            say(item, f"what does {name} count? {text!r}")
    for name in item.comment.fields:
        if name[0].islower() and not any(name in dict((n, t) for t, n in s.parameters) for s in item.siblings):
            say(item, f"there is no parameter {name}")
    if item.type not in ("", "void") and not item.special and not item.result:
        say(item, "nothing about the result")
    for rule in ("Failure", "Ownership", "Threads", "Blocking", "Cost"):
        if not item.lookup(rule):
            say(item, f"nothing about {rule.lower()}")
    if headers.WIDE.search(item.text) and not item.lookup("Width"):
        say(item, "a type that differs between the targets, and no Width")
    wanted = item.lookup("Example") or ""
    if not headers.example(item, parts) and not wanted.startswith("None"):
        say(item, "no marked part of an example calls it")
    own = item.comment.fields.get("Example", "")
    if own and own not in parts and not own.startswith("None"):
        say(item, f"no example has a part [{own}]")
    for other in item.see:
        if other not in names and not other.startswith("docs/"):
            say(item, f"see {other}? there is no such page")
    if not item.see:
        say(item, "nothing to see also")


def exported():
    """The names of the exported functions, as the header's names are written."""
    text = (headers.ROOT / "abi/libKest.m32.symbols").read_text()
    for line in subprocess.run(["c++filt"], input=text, capture_output=True, text=True, check=True).stdout.split("\n"):
        name = re.sub(r"\[abi:\w+\]", "", line).strip()
        if not name or re.match(r"(#|vtable|typeinfo|VTT|operator |non-virtual)", name):
            continue
        yield re.sub(r"\(.*", "", name) if "operator(" not in name else name


def main():
    tops, classes, items, _ = headers.load()
    parts = headers.snippets()
    items = [i for i in items if i.kind not in ("skipped", "deleted")]
    names = {i.name for i in items} | set(classes)
    functions = [i for i in items if i.kind == "function" and i.access != "private"]
    for item in functions:
        check_function(item, parts, names)
    for item in items:
        for line in item.comment.odd + item.scope.comment.odd:
            say(item, f"an indented line that is no field: {line!r}")
        if item.kind != "function" and item.access != "private" and not item.purpose:
            say(item, "no comment")
    for name, scope in classes.items():
        if scope.access == "public" and not scope.comment.purpose:
            problems.append(f"include/kest/{scope.header}.h:{scope.line}: {name}: no comment")
    plain = {i.name.split("::")[-1] for i in items if i.kind == "variable"}  # with C linkage
    missing = sorted(set(exported()) - names - plain)
    problems.extend(f"abi: {name} is exported and has no page" for name in missing)
    used = {headers.example(i, parts) for i in items} | {headers.class_example(c, parts) for c in classes.values()}
    problems.extend(f"{parts[name][0]}: no page shows [{name}]" for name in parts if name not in used)
    print("\n".join(problems))
    print(f"{len(functions)} functions, {len(classes)} classes, {len(parts)} parts of examples, {len(problems)} problems")
    return 1 if problems or len(functions) < 300 else 0


if __name__ == "__main__":
    sys.exit(main())
