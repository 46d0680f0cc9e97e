#!/usr/bin/env bash
# links_test.sh: no link between the pages of the project is dead, be it to a file, to a heading or to a
# picture; docs/README.md leads to every page; and each page shows its pictures with a word for who
# cannot see them.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
python3 - "$@" <<'END'
import glob, os, re, sys

status = 0
def complain(page, text):
    global status
    print(f'{page}: {text}')
    status = 1

pages = sorted(p for pattern in ('*.md', 'docs/**/*.md', 'src/**/*.md', 'scripts/**/*.md', 'tests/**/*.md',
                                 'examples/**/*.md', 'tools/**/*.md', 'debian/*.md')
               for p in glob.glob(pattern, recursive=True))
text, anchors = {}, {}
for page in pages:
    # Without code, whose brackets are no links and whose # is no heading.
    source = re.sub(r'^```.*?^```$', '', open(page, encoding='utf-8').read(), flags=re.M | re.S)
    seen = {}
    anchors[page] = set(re.findall(r'<a (?:name|id)="([^"]+)"', source))
    for heading in re.findall(r'^#+ +(.*?)\s*$', source, flags=re.M):
        heading = re.sub(r'\[([^]]*)\]\([^)]*\)', r'\1', heading).lower()
        slug = re.sub(r'[^\w\- ]', '', heading).replace(' ', '-')
        count = seen.get(slug, 0)
        seen[slug] = count + 1
        anchors[page].add(f'{slug}-{count}' if count else slug)
    text[page] = re.sub(r'`[^`\n]*`', 'code', source)

checked, reached = 0, {'docs/README.md'}
for page in pages:
    for picture, label, target in re.findall(r'(!?)\[([^]]*)\]\(([^)\s]+)\)', text[page]):
        if re.match(r'[a-z]+:', target):
            continue
        checked += 1
        if picture and not label.strip():
            complain(page, f'the picture {target} has no text')
        path, _, anchor = target.partition('#')
        file = os.path.normpath(os.path.join(os.path.dirname(page), path)) if path else page
        if not os.path.exists(file):
            complain(page, f'there is no {target}')
        elif anchor and file in anchors and anchor not in anchors[file]:
            complain(page, f'{file} has no heading for #{anchor}')
        if page == 'docs/README.md':
            reached.add(file)

for page in pages:
    if page.startswith('docs/') and page not in reached:
        complain('docs/README.md', f'it does not lead to {page}')
if checked < 120:
    complain('all pages', f'only {checked} links found')
sys.exit(status)
END
