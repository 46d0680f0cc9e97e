#!/usr/bin/env python3
"""Man pages of section 3 from the headers: man.py FOLDER DATE VERSION.

One for each function (with its overloads), class and macro. Constants and variables that share a
comment share a page, under each of their names.
"""

import re
import shutil
import sys
import textwrap
from pathlib import Path

import headers


def escape(text):
    text = text.replace("\\", "\\e").replace("`", "\\(ga").replace("^", "\\(ha")
    return re.sub(r"(\w)\(\)", r"\1\\&()", re.sub(r"^([.'])", r"\\&\1", text))


def escape_words(text):
    """For a macro's arguments, where a quote is one more thing with a meaning."""
    return "\\(dq".join(escape(part) for part in text.split("\\(dq"))


def sentence(text):
    """A field's text as a sentence; a name stays as it is."""
    plain = re.match(r"[a-z]+(?![A-Za-z0-9_:(*])", text)
    return (text[0].upper() + text[1:] if plain else text) + ("" if text.endswith(".") else ".")


def lines_of(text):
    """Prose with a sentence a line, as mdoc wants it, in lines of up to 78 columns."""
    for sentence in headers.sentences(text):
        for line in textwrap.wrap(escape(sentence), 78, break_long_words=False, break_on_hyphens=False):
            yield re.sub(r"^([.'])", r"\\&\1", line)


def prose(paragraphs):
    out, first = [], True
    for paragraph in paragraphs:
        if isinstance(paragraph, list):
            out += [".Bd -literal -offset indent", *(escape(line) for line in paragraph), ".Ed"]
        else:
            out += [] if first else [".Pp"]
            out += lines_of(paragraph)
        first = False
    return out


def argument(text):
    return '"' + escape(text).replace('"', '\\(dq') + '"'


def synopsis(item):
    if item.kind == "macro":
        return [f".Fd {argument('#define ' + item.name)}"]
    if item.kind != "function":
        return [f".Vt {argument(declaration(item))}"]
    short = item.name.split("::")[-1]
    text = re.sub(r"\binline ", "", declaration(item)).replace(short + "(", item.name + "(", 1)
    return [".Bd -literal", *(escape(line) for line in textwrap.wrap(text + ";", 78, subsequent_indent="    ", break_on_hyphens=False)), ".Ed"]


def declaration(item):
    return " ".join(re.sub(r"\bKEST_API ", "", item.text).split()).rstrip(";")


def unique(found):
    return list(dict.fromkeys(x for x in found if x))


def see_also(names, title):
    pages = set(PAGE.get(n, n) for n in names if not n.startswith("docs/")) - {title}
    pages = sorted(pages, key=lambda n: escape(n).lower())
    guides = sorted(set(n for n in names if n.startswith("docs/")))
    out = [f".Xr {escape(n)} 3" + (" ," if i + 1 < len(pages) + len(guides) else "") for i, n in enumerate(pages)]
    out += [f".Pa {n}" + (" ," if i + 1 < len(guides) else "") for i, n in enumerate(guides)]
    return [".Sh SEE ALSO", *out] if out else []


def page(title, names, header, purpose, body):
    out = [".\\\" Made from the headers by scripts/reference/man.py.", f".Dd {DATE}", f".Dt {escape(title.upper())} 3", ".Os", ".Sh NAME"]
    out += [f".Nm {escape(n)}" + (" ," if i + 1 < len(names) else "") for i, n in enumerate(names)]
    brief = purpose[:-1]
    brief = brief.replace('"', "\\(dq") if '"' in brief else brief
    out += [".Nd " + escape_words(brief[0].lower() + brief[1:] if re.match(r"[A-Z][a-z]* ", brief) else brief)]
    out += [".Sh LIBRARY", f"Kest {VERSION} (libKest.so.1, -lKest)", ".Sh SYNOPSIS", f".In kest/{header}.h", *body]
    (FOLDER / f"{title}.3").write_text("\n".join(line.rstrip() for line in out) + "\n")
    for other in names[1:]:
        (FOLDER / f"{other}.3").symlink_to(f"{title}.3")


def tagged(title, pairs):
    pairs = list(pairs)
    if not pairs:
        return []
    out = [f".Sh {title}"] if title else []
    out += [".Bl -tag -width Ds"]
    for name, text in pairs:
        out += [f".It {name}", *lines_of(sentence(text))]
    return out + [".El"]


def function_page(name, items):
    body = [line for item in items for line in synopsis(item)]
    body.append(".Sh DESCRIPTION")
    seen = []
    for item in items:
        text = [item.purpose, *item.description]
        if text not in seen:
            body += ([".Pp"] if seen else []) + prose(text)
            seen.append(text)
    described = {}
    for item in items:
        for kind, parameter in item.parameters:
            if parameter:
                described.setdefault(parameter, []).append(item.parameter(parameter))
    rows = [(f"Fa {escape(n)}" if n != "..." else "...", "; or ".join(t.rstrip(".") for t in unique(ts))) for n, ts in described.items()]
    if rows:
        body += [".Ss Parameters", *tagged(None, rows)]
    results = unique(item.result for item in items)
    if results:
        body.append(".Sh RETURN VALUES")
        for i, text in enumerate(results):
            body += ([".Pp"] if i else []) + list(lines_of(sentence(text)))
    rules = {}
    for item in items:
        for rule, text in item.rules:
            rules.setdefault({"Width": "32 and 64 bits"}.get(rule, rule), []).append(text)
    part = next((headers.example(i, PARTS) for i in items if headers.example(i, PARTS)), None)
    if part:
        body += shown_part(part)
    else:
        body += [".Sh EXAMPLES", *lines_of(items[0].lookup("Example"))]
    body += see_also([n for item in items for n in item.see], name)
    body += tagged("NOTES", [(f"Sy {k}", " ".join(unique(ts))) for k, ts in rules.items()])
    return body


def shown_part(name):
    path, code = PARTS[name]
    return [".Sh EXAMPLES", "From", f".Pa {path} :", ".Bd -literal", *(escape(line) for line in code), ".Ed"]


def class_page(scope):
    body = [f".Vt {argument('class ' + scope.name + (' : public ' + scope.bases[0].name if scope.bases else ''))}", ".Sh DESCRIPTION"]
    comment = scope.comment
    first = comment.paragraphs[0][len(comment.purpose):].strip() if isinstance(comment.paragraphs[0], str) else ""
    body += prose([comment.purpose, *([first] if first else []), *comment.paragraphs[1:]])
    fields = [(k, v) for k, v in comment.fields.items() if k[0].isupper() and k not in ("Example", "See")]
    top = TOPS[scope.header]
    fields += [(k, top.comment.fields[k]) for k in headers.RULES if k in top.comment.fields and k not in comment.fields]
    if fields:
        body += [".Ss Rules of all members", *tagged(None, [(f"Sy {k}", v) for k, v in fields])]
    rows = {}
    for item in scope.items:
        if item.access != "private" and item.purpose and not item.name.endswith("::"):
            rows.setdefault(item.name, item.purpose)
    if rows:
        body += [".Ss Members", *tagged(None, [(f"Fn {escape(n.split('::')[-1])}" if any(
            i.kind == "function" and i.name == n for i in scope.items) else f"Va {escape(n.split('::')[-1])}", t) for n, t in rows.items()])]
    part = headers.class_example(scope, PARTS)
    body += shown_part(part) if part else []
    members = [i.name for i in scope.items if i.kind == "function" and i.access != "private" and i.name in PAGE]
    guides = [n.strip() for n in comment.fields.get("See", "").split(",") if n.strip()]
    guides += [n.strip() for n in top.comment.fields.get("See", "").split(",") if n.strip().startswith("docs/")]
    named = ["KEST::" + g if "KEST::" + g in headers.NAMES else g for g in guides]
    return body + see_also(sorted(set(members)) + named + [b.name for b in scope.bases], scope.name)


def main():
    groups = {}
    for item in ITEMS:
        if item.kind in ("skipped", "deleted") or item.access == "private":
            continue
        if item.owner and item.kind != "function":
            continue  # on the page of its class
        if item.kind == "variable" and len(item.siblings) > 1 and item.comment is item.siblings[0].comment:
            groups.setdefault(item.siblings[0].name, []).append(item)
        else:
            groups.setdefault(item.name, []).append(item)
    for name, items in groups.items():
        for item in items:
            PAGE[item.name] = name
    for name, scope in CLASSES.items():
        if scope.access == "public":
            PAGE[name] = name
    for name, items in groups.items():
        first = items[0]
        if first.kind == "function":
            page(name, [name], first.header, first.purpose, function_page(name, items))
        else:
            body = [line for item in items for line in synopsis(item)] + [".Sh DESCRIPTION"]
            spoken = first.comment
            rest = spoken.paragraphs[0][len(spoken.purpose):].strip()
            body += prose([spoken.purpose, *([rest] if rest else []), *spoken.paragraphs[1:]])
            body += tagged("NOTES", [(f"Sy {k}", v) for k, v in spoken.fields.items() if k[0].isupper() and k not in ("See", "Example")])
            names = unique(i.name for i in items)
            others = [n.strip() for n in (first.lookup("See") or "").split(",") if n.strip()]
            body += see_also([n for n in ["KEST::" + o if "KEST::" + o in headers.NAMES else o for o in others] if n not in names], name)
            page(name, names, first.header, first.purpose, body)
    for name, scope in CLASSES.items():
        if scope.access == "public":
            page(name, [name], scope.header, scope.comment.purpose, class_page(scope))
    print(f"{len(list(FOLDER.iterdir()))} man pages")


if __name__ == "__main__":
    FOLDER, DATE, VERSION = Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)
    TOPS, CLASSES, ITEMS, _ = headers.load()
    PARTS, PAGE = headers.snippets(), {}
    main()
