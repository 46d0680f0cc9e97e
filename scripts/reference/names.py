#!/usr/bin/env python3
"""The page of the site that lists every name with its purpose, a section a header and a class."""

import headers


def cell(text):
    for c in "\\`*_<>&#@%|[]\"":
        text = text.replace(c, "\\" + c)
    return text


def rows(items):
    seen = set()
    for item in items:
        if item.kind in ("function", "variable", "macro", "type") and item.access != "private" and item.purpose:
            if item.name in seen or item.name.endswith("::"):
                continue
            seen.add(item.name)
            # Doxygen has no links to these.
            plain = "operator" in item.name or "~" in item.name or item.text.startswith("struct __")
            yield f"- {cell(item.name) if plain else chr(92) + 'ref ' + item.name} &ndash; {cell(item.purpose)}"


tops, classes, _, _ = headers.load()
print("# Names {#names}\n\nEverything that the headers declare, each with its purpose.\n")
for header, top in tops.items():
    listed = list(rows(top.items))
    inner = [c for c in classes.values() if c.header == header and c.access == "public"]
    if not listed and not inner:
        continue
    print(f"## kest/{header}.h\n\n{cell(top.comment.purpose)}\n")
    print("\n".join(listed) + "\n")
    for scope in inner:
        print(f"### {scope.name}\n\n{cell(scope.comment.purpose)}\n")
        print("\n".join(rows(scope.items)) + "\n")
