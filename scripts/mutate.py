#!/usr/bin/python3
"""Changes the library in one place, again and again, and runs the tests that should see it.

usage: scripts/mutate.py [--again] [--minutes N] [FILE | FOLDER]...
       scripts/mutate.py --list [FILE | FOLDER]...
       scripts/mutate.py --report REVIEWED

Every operator, literal, condition, result and statement of src/ is changed in turn. A changed file is
compiled with the flags of build/m32 and linked with the other objects; then the tests of its folder run,
the file's own ones first, until one fails: the mutant is killed. What m32 does not see, the file's own
tests look at once more with the sanitizers of build/m32-asan. A mutant whose object code is the
original's is the same program, and one that does not compile is none: neither counts. A file for one
level of the processor is tested at that level, the others of its folder at the best and at none.

--again       run the survivors of earlier runs again
--minutes N   start no mutant after N minutes; whatever was done by then is an even sample
--list        print the mutants
--report      print how many were killed, and the survivors that REVIEWED does not name. It names one by
              its file, in a heading, and by its line before and after: - `before` -> `after`. Fails
              below 95 % of all, or 98 % of what is not in REVIEWED in one of the subjects in AREAS

The verdicts go to build/deep/mutation/verdicts.tsv, and a later run does not repeat them: file, its
checksum, number, verdict, by whom, function, line, then the source line before and after.
"""
import argparse, collections, concurrent.futures, glob, hashlib, json, os, queue, re, resource, shlex
import shutil, signal, subprocess, sys, threading, time
from clang.cindex import CursorKind as K, Index, TypeKind

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WORK = os.path.join(ROOT, 'build/deep/mutation')
PLATFORM = {'file': 'file', 'file_finder': 'file', 'directory': 'file', 'library': 'file',
            'message_queue': 'message', 'shutdown': 'frame'}  # the others are tested in tests/thread

SWAPS = {'+': '-', '-': '+', '*': '/', '/': '*', '%': '*', '<<': '>>', '>>': '<<', '&': '|', '|': '&',
         '^': '&', '&&': '||', '||': '&&', '==': '!=', '!=': '==', '<': '<= >', '<=': '< >=',
         '>': '>= <', '>=': '> <=', '+=': '-=', '-=': '+=', '*=': '/=', '/=': '*=', '%=': '*=',
         '<<=': '>>=', '>>=': '<<=', '&=': '|=', '|=': '&=', '^=': '&=',
         '!': ' ', '~': ' ', '++': '--', '--': '++'}
# What the report names apart from its folder: 98 % of it is to be killed, of all 95 %.
AREAS = {'strings': 'src/string/', 'big integers': 'src/crypto/big_int', 'BER': 'src/crypto/ber',
         'digests': 'src/crypto/(md|sha|hmac|message_digest|digest|padding|words|random)',
         'ciphers': 'src/crypto/(block|cipher|crypter|des|rc|rsa|stream|wipe)'}

FUNCTIONS = (K.FUNCTION_DECL, K.CXX_METHOD, K.CONSTRUCTOR, K.DESTRUCTOR, K.FUNCTION_TEMPLATE,
             K.CONVERSION_FUNCTION)
LOOPS = (K.WHILE_STMT, K.FOR_STMT, K.DO_STMT)
BODIES = LOOPS + (K.IF_STMT, K.COMPOUND_STMT, K.CASE_STMT, K.DEFAULT_STMT, K.CXX_FOR_RANGE_STMT)
INTEGERS = range(TypeKind.CHAR_U.value, TypeKind.INT128.value + 1)

Mutant = collections.namedtuple('Mutant', 'file start end text function')


def stem(path):
    return os.path.basename(path).rsplit('.', 1)[0]


def subject(source):
    """The file's name without the level that it is for."""
    return re.sub('_(plain|sse2|ssse3|avx2|avx512|sha)$', '', stem(source))


def levels(source):
    """The levels of the processor at which the file's code runs; an empty one is the machine's own."""
    own = re.search('_(plain|sse2|ssse3|avx2)$', stem(source))
    return [own[1]] if own else ['', 'plain'] if folder(source) in ('string', 'text', 'crypto') else ['']


def folder(source):
    """Where under tests/ a source file is tested."""
    area = source.split('/')[1]
    return PLATFORM.get(stem(source), 'thread') if area == 'platform' else area


def span(cursor):
    return cursor.extent.start.offset, cursor.extent.end.offset


def condition(cursor, children, source):
    if cursor.kind in (K.WHILE_STMT, K.IF_STMT, K.CONDITIONAL_OPERATOR):
        return children[0]
    if cursor.kind == K.DO_STMT:
        return children[-1]
    first = source.index(b';', span(cursor)[0])
    second = source.index(b';', first + 1)
    return next((c for c in children if first < span(c)[0] < second), None)


def changes(cursor, parent, last, source):
    """Yields what to do to one node, as (start, end, text)."""
    kind, (start, end) = cursor.kind, span(cursor)
    text = source[start:end].decode()
    children = list(cursor.get_children())

    if kind in (K.BINARY_OPERATOR, K.COMPOUND_ASSIGNMENT_OPERATOR):
        left, right = span(children[0])[1], span(children[1])[0]
        between = re.fullmatch(r'(\s*)([^\s\w]+)(\s*)', source[left:right].decode())
        for swap in SWAPS.get(between and between[2], '').split():
            yield left, right, between[1] + swap + between[3]
    elif kind == K.UNARY_OPERATOR:
        inner = span(children[0])
        where = (start, inner[0]) if inner[0] > start else (inner[1], end)
        operator = source[slice(*where)].decode()
        if operator in ('!', '~', '-', '++', '--'):
            yield (*where, '' if operator == '-' else SWAPS[operator].strip())
    elif kind == K.INTEGER_LITERAL and re.fullmatch(r'(0x[0-9a-fA-F]+|\d+)[uUlL]*', text):
        if parent.kind == K.INIT_LIST_EXPR:
            yield start, end, f'({text} ^ 1)'  # a table's entry
        elif parent.kind in (K.VAR_DECL, K.FIELD_DECL) and source[end:end + 1] == b']':
            yield start, end, f'({text} - 1)'  # an array's size
        else:
            yield start, end, f'({text} + 1)'
            if text != '0':
                yield start, end, '0'
    elif kind == K.CHARACTER_LITERAL and text.endswith("'"):
        yield start, end, f'({text} + 1)'
    elif kind == K.CXX_BOOL_LITERAL_EXPR and text in ('true', 'false'):
        yield start, end, 'false' if text == 'true' else 'true'

    if kind in LOOPS + (K.IF_STMT, K.CONDITIONAL_OPERATOR):
        check = condition(cursor, children, source)
        if check is not None and check.kind.is_expression():
            before = source[slice(*span(check))].decode()
            if not re.search(r'[!=]=', before):  # that one is among the operators
                yield (*span(check), f'!({before})')
            yield (*span(check), 'false')
            if kind not in LOOPS:
                yield (*span(check), 'true')
    elif kind == K.RETURN_STMT and children and not re.fullmatch(r'\w+', text[6:].strip()):
        result, value = children[0].type.get_canonical().kind, text[6:].strip()
        if result == TypeKind.BOOL:
            yield start, end, f'return !({value})'
        elif result.value in INTEGERS:
            yield start, end, f'return ({value}) + 1'
            yield start, end, 'return 0'
        elif result == TypeKind.POINTER:
            yield start, end, 'return nullptr'
        elif result == TypeKind.VOID:
            yield start, end, 'return'
    alone = parent.kind == K.IF_STMT and len(list(parent.get_children())) == 2  # its condition says it
    if parent.kind in BODIES and not alone and (
            kind in (K.BREAK_STMT, K.CONTINUE_STMT) or kind == K.RETURN_STMT and not last or
            kind.is_expression() and source[end:].lstrip()[:1] == b';'):
        yield start, end, ''


def walk(cursor, parent, last, function, path, source):
    if cursor.kind == K.STATIC_ASSERT:
        return
    if cursor.kind in FUNCTIONS:
        function = cursor.spelling
    for start, end, text in changes(cursor, parent, last, source):
        yield Mutant(path, start, end, text, function)
    children = list(cursor.get_children())
    for child in children:
        # The last statement of a function's body has nothing to fall through to.
        ends = child == children[-1] and (last or parent.kind in FUNCTIONS)
        yield from walk(child, cursor, ends, function, path, source)


class Build:
    """One preset's way to compile, link and test."""

    def __init__(self, preset, memory):
        self.path, self.preset, self.memory = os.path.join(ROOT, 'build', preset), preset, memory
        self.commands, self.objects, self.baseline = {}, {}, {}
        os.makedirs(os.path.join(WORK, preset), exist_ok=True)
        for entry in json.load(open(os.path.join(self.path, 'compile_commands.json'))):
            source = os.path.relpath(entry['file'], ROOT)
            if source.startswith('src/') and 'kest_objects' in entry['command']:
                words = shlex.split(entry['command'])
                self.commands[source] = [w for w in words[:words.index('-o')]
                                         if w != '-g' and not w.startswith('-W')]
                self.objects[source] = os.path.join(WORK, preset, source.replace('/', '_') + '.o')
        sanitize = [w for w in words if w.startswith('-fsanitize=')]
        self.link = ['g++', '-m32', '-shared', '-fuse-ld=gold', *sanitize, '-Wl,-soname,libKest.so.1',
                     '-Wl,--version-script=' + os.path.join(self.path, 'libKest.map'), '-ldl', '-lpthread']

    def compile(self, source, overlay, output):
        """source as it is in overlay (which has its own src/), with overlay's headers first."""
        changed = os.path.join(overlay, source)
        command = self.commands[source]
        return run([command[0], '-w', '-I' + os.path.join(overlay, 'src'), *command[1:], '-c', '-o', output,
                    changed if os.path.exists(changed) else os.path.join(ROOT, source)], 120)[0] == 0

    def prepare(self, pool):
        jobs = [pool.submit(self.compile, s, ROOT, o) for s, o in self.objects.items()]
        if not all(job.result() for job in jobs):
            sys.exit(f'{self.preset}: the sources do not compile')
        library = os.path.join(WORK, self.preset)
        run([*self.link, '-o', os.path.join(library, 'libKest.so.1'), *self.objects.values()], 120)
        self.built = library

    def programs(self, source, users):
        """The test programs of a file: those of its name, of its name's first word, of its folder, and of
        the folders that include it. The sanitizers make programs slow: there the first two have to do,
        where there are any.
        """
        def rank(program):
            test = os.path.basename(program)
            nearness = [test.startswith(subject(source)), test.startswith(stem(source).split('_')[0]),
                        os.path.basename(os.path.dirname(program)) == folder(source), True]
            return nearness.index(True)
        found = {p for f in {folder(f) for f in [source, *users]}
                 for p in glob.glob(os.path.join(self.path, 'tests', f, '*_test'))}
        own = {p for p in found if rank(p) < 2}
        return sorted(own if own and 'asan' in self.preset else found, key=lambda p: (rank(p), self.cost(p)))

    def cost(self, program):
        """Seconds that the program takes with the unchanged library; also says how it has to be run."""
        if program not in self.baseline:
            begin, usual = time.time(), [[]]
            if not self.passes(program, usual, self.built, 60):
                names, group = run([program, '--gtest_list_tests'], 60, keep=True)[1].split('\n'), ''
                usual = []
                for name in names:
                    group = group if name.startswith(' ') else name.split()[0] if name else ''
                    usual += [['--gtest_filter=' + group + name.split()[0]]] if name.startswith(' ') else []
                usual = [way for way in usual if self.passes(program, [way], self.built, 60)]
                print(f'case by case, for it fails in one process: {program}, {len(usual)} cases')
            self.baseline[program] = time.time() - begin, usual
        return self.baseline[program][0]

    def passes(self, program, ways, library, limit):
        environment = dict(os.environ, LD_LIBRARY_PATH=library, KEST_TEST_CASES='200', KEST_TEST_SEED='1')
        for way in ways:
            scratch = os.path.join(library, 'tmp')
            shutil.rmtree(scratch, ignore_errors=True)
            os.makedirs(scratch)
            environment['TMPDIR'] = scratch
            if run([program, '--gtest_brief=1', '--gtest_fail_fast', *way], limit, self.memory, environment,
                   scratch)[0] != 0:
                return False
        return True

    def judge(self, mutant, users, slot):
        """The verdict on a mutant, and whose it is."""
        shutil.rmtree(slot, ignore_errors=True)
        changed = os.path.join(slot, mutant.file)
        os.makedirs(os.path.dirname(changed))
        source = open(os.path.join(ROOT, mutant.file), 'rb').read()
        with open(changed, 'wb') as out:
            out.write(source[:mutant.start] + mutant.text.encode() + source[mutant.end:])
        objects, same = dict(self.objects), True
        for user in users:
            objects[user] = os.path.join(slot, user.replace('/', '_') + '.o')
            if not self.compile(user, slot, objects[user]):
                return 'invalid', 'compiler'
            same = same and open(objects[user], 'rb').read() == open(self.objects[user], 'rb').read()
        if same:
            return 'same', 'compiler'
        for level in levels(mutant.file):
            if level:
                objects['src/cpu/level.cpp'] = os.path.join(
                    self.path, f'CMakeFiles/kest_{level}_level.dir/src/cpu/level.cpp.o')
            if run([*self.link, '-o', os.path.join(slot, 'libKest.so.1'), *objects.values()], 120)[0] != 0:
                return 'killed', 'linker'
            for program in self.programs(mutant.file, users):
                usual, ways = self.baseline[program]
                if not self.passes(program, ways, slot, 3 + 4 * usual):
                    return 'killed', '/'.join(filter(None, [self.preset, level, os.path.basename(program)]))
        return 'survived', '-'


def run(command, limit, memory=0, environment=None, cwd=ROOT, keep=False):
    """Status and output. limit is in seconds of processor time; waiting may take ten more."""
    def restrain():
        resource.setrlimit(resource.RLIMIT_CPU, (int(limit) + 1, int(limit) + 2))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if memory:
            resource.setrlimit(resource.RLIMIT_AS, (memory, memory))
    output = subprocess.PIPE if keep else subprocess.DEVNULL
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.DEVNULL,
                               env=environment, cwd=cwd, preexec_fn=restrain, start_new_session=True, text=True)
    try:
        text = process.communicate(timeout=limit + 10)[0]
        return process.returncode, text
    except subprocess.TimeoutExpired:
        return -1, ''
    finally:
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        process.wait()


def report(book, reviewed):
    known, file = set(), None
    for line in open(reviewed):
        if heading := re.match(r'## (\S+)$', line):
            file = heading[1]
        elif entry := re.match(r'- `(.*)` -> `(.*)`$', line):
            known.add((file, entry[1], entry[2]))
    counts, unknown = collections.defaultdict(collections.Counter), []
    for row in open(book):
        file, _, _, verdict, _, _, line, before, after = row.rstrip('\n').split('\t')
        area = next((a for a, path in AREAS.items() if re.match(path, file)), file.split('/')[1])
        if verdict == 'survived' and (file, before, after) in known:
            verdict = 'reviewed'
        elif verdict == 'survived':
            unknown.append(f'{file}:{line}: - `{before}` -> `{after}`')
        for name in (area, 'all'):
            counts[name][verdict] += 1
    low = []
    for area, count in sorted(counts.items()):
        killed, seen = count['killed'], count['killed'] + count['survived']
        total = max(seen + count['reviewed'], 1)
        print(f'{area}: mutants killed\t{killed} of {total} ({100 * killed / total:.1f} %), {count["reviewed"]} reviewed')
        if area == 'all' and killed < .95 * total or area in AREAS and killed < .98 * seen:
            low.append(f'{area}: too many survive')
    print(f'survivors not reviewed\t{len(unknown)}')
    print(*low, *unknown, sep='\n', file=sys.stderr)
    return 1 if low else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument('--again', action='store_true')
    parser.add_argument('--minutes', type=float, default=1e9)
    parser.add_argument('--list', action='store_true')
    parser.add_argument('--report', metavar='REVIEWED')
    parser.add_argument('where', nargs='*', default=['src'])
    options = parser.parse_args()
    end = time.time() + 60 * options.minutes
    os.makedirs(WORK, exist_ok=True)
    book = os.path.join(WORK, 'verdicts.tsv')
    if options.report:
        sys.exit(report(book, options.report))

    builds = [Build('m32', 3 << 30), Build('m32-asan', 0)]
    users, mutants, sums, sources = collections.defaultdict(list), [], {}, {}
    for source, command in sorted(builds[0].commands.items()):
        unit = Index.create().parse(os.path.join(ROOT, source), args=command[1:])
        roots = {source: None}
        for header in {os.path.relpath(i.include.name, ROOT) for i in unit.get_includes()}:
            if header.startswith('src/'):
                if header not in users:
                    roots[header] = None
                users[header].append(source)
        users[source].append(source)
        for root in sorted(roots):
            sources[root] = open(os.path.join(ROOT, root), 'rb').read()
            sums[root] = hashlib.sha1(sources[root]).hexdigest()[:8]
            for cursor in unit.cursor.get_children():
                if cursor.location.file and os.path.relpath(cursor.location.file.name, ROOT) == root:
                    mutants += walk(cursor, unit.cursor, False, '', root, sources[root])
    inside = lambda f: any(f == w or f.startswith(w.rstrip('/') + '/') for w in map(os.path.normpath, options.where))
    numbers = collections.Counter()
    chosen = []
    for mutant in dict.fromkeys(mutants):
        numbers[mutant.file] += 1
        if inside(mutant.file):
            chosen.append((mutant, (mutant.file, sums[mutant.file], str(numbers[mutant.file]))))
    # Any first part of this order is spread evenly over the whole (Fibonacci hashing).
    chosen = [c for _, c in sorted(enumerate(chosen), key=lambda c: c[0] * 2654435761 % 2**32)]

    def lines(mutant):
        source = sources[mutant.file]
        first = source.rfind(b'\n', 0, mutant.start) + 1
        last = source.find(b'\n', mutant.end)
        after = source[first:mutant.start] + mutant.text.encode() + source[mutant.end:last]
        flat = lambda b: ' '.join(b.decode().split())
        return mutant.function, str(source.count(b'\n', 0, mutant.start) + 1), flat(source[first:last]), flat(after)

    if options.list:
        for mutant, key in chosen:
            print(*key, *lines(mutant), sep='\t')
        return

    known = {}
    if os.path.exists(book):
        for row in open(book):
            row = row.rstrip('\n').split('\t')
            known[tuple(row[:3])] = row
        if options.again:
            known = {k: r for k, r in known.items() if r[3] != 'survived'}
        with open(book, 'w') as out:
            out.writelines('\t'.join(row) + '\n' for row in known.values() if row[1] == sums.get(row[0]))
    todo = [(m, k) for m, k in chosen if k not in known]

    jobs = os.cpu_count() or 1
    slots, lock, done = queue.Queue(), threading.Lock(), 0
    for i in range(jobs):
        slots.put(os.path.join(WORK, f'slot{i}'))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool, open(book, 'a') as out:
        for build in builds:
            build.prepare(pool)
            for file in {m.file for m, _ in todo}:
                build.programs(file, users[file])

        def one(mutant, key):
            nonlocal done
            if time.time() > end:
                return
            slot = slots.get()
            try:
                for build in builds:
                    verdict, who = build.judge(mutant, users[mutant.file], slot)
                    if verdict != 'survived':
                        break
            finally:
                slots.put(slot)
            with lock:
                done += 1
                print(*key, verdict, who, *lines(mutant), sep='\t', file=out, flush=True)
                if done % 100 == 0:
                    print(f'{done} of {len(todo)}', flush=True)
        for job in [pool.submit(one, m, k) for m, k in todo]:
            job.result()


if __name__ == '__main__':
    main()
