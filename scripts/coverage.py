#!/usr/bin/env python3
"""Holds what gcovr measured (its JSON form) against the list of branches that no test takes.

usage: scripts/coverage.py REPORT LIST

Prints the figures, one a line, and on the error output what is wrong: a line or a function that did not
run, too few branches, a branch not taken that LIST does not name, or one that it names and a test takes.
LIST names a branch by its file, in a heading, and by the text of its line: - `text`: reason.
"""
import json
import re
import sys


def listed(path):
    found, file = set(), None
    for line in open(path):
        if heading := re.match(r'## (\S+)$', line):
            file = heading[1]
        elif entry := re.match(r'- `(.*?)`: ', line):
            found.add((file, entry[1]))
    return found


def main(report, path):
    lines = functions = branches = lines_run = functions_run = taken = 0
    untaken, wrong = set(), []
    for file in json.load(open(report))['files']:
        name = file['file']
        source = open(name).read().split('\n')
        for function in file.get('functions', []):
            functions += 1
            functions_run += function['execution_count'] > 0
            if function['execution_count'] == 0:
                wrong.append(f'{name}: never called: {function["name"]}')
        for line in file['lines']:
            if line.get('gcovr/noncode'):
                continue
            text = ' '.join(source[line['line_number'] - 1].split())
            lines += 1
            lines_run += line['count'] > 0
            if line['count'] == 0:
                wrong.append(f'{name}: never run: {text}')
            ways = line['branches']
            branches += len(ways)
            taken += sum(way['count'] > 0 for way in ways)
            if any(way['count'] == 0 for way in ways):
                untaken.add((name, text))

    percent = 100 * taken / branches
    print(f'lines\t{lines_run} of {lines}')
    print(f'functions\t{functions_run} of {functions}')
    print(f'branches\t{taken} of {branches} ({percent:.1f} %)')
    known = listed(path)
    wrong += [f'{file}: a branch is not taken: - `{text}`: ' for file, text in sorted(untaken - known)]
    wrong += [f'{file}: listed, but taken: {text}' for file, text in sorted(known - untaken)]
    if percent < 98:
        wrong.append(f'{percent:.1f} % of the branches are too few')
    print(*wrong, sep='\n', end='\n' if wrong else '', file=sys.stderr)
    return 1 if wrong else 0


if __name__ == '__main__':
    sys.exit(main(*sys.argv[1:]))
