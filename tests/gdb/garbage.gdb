# Objects filled with addresses, small numbers and noise: each is shown, with a remark where it is none,
# never with gdb's own words for an error, and no walk through it goes on for ever.

set startup-with-shell off
set disable-randomization off
break Stop if $_caller_is("(anonymous namespace)::Broken", 1)
commands
  silent
end
echo == Broken\n
run
python
import random

random.seed(1)
objects = ['bstr', 'array', 'list', 'map', 'textMap', 'bytes', 'plex']
width = gdb.lookup_type('void').pointer().sizeof
gdb.execute('up-silently')
places = [int(gdb.parse_and_eval('&' + name)) for name in ('ring', 'ends', 'buckets', 'block', 'list', 'map')]
queue = gdb.lookup_type('(anonymous namespace)::SMessageQueue',
                        gdb.lookup_global_symbol('KEST::InternalPostMessage').symtab.static_block())


def some_word():
    number = random.choice([0, random.randrange(5), random.randrange(2**30), random.randrange(2**(8 * width)),
                            random.choice(places) + random.choice([0, 0, 4, 8, 1])])
    return number.to_bytes(width, 'little')


def fill(value):
    size = value.type.sizeof
    noise = b''.join(some_word() for _ in range(-(-size // width)))
    gdb.selected_inferior().write_memory(int(value.address), noise[:size])


shown = errors = 0
for at in range(1000):
    gdb.execute('set print elements ' + random.choice(['200', '3', 'unlimited']))
    if at % 10 == 0:
        value = gdb.parse_and_eval('&garbage').cast(queue.pointer()).dereference()
    else:
        value = gdb.parse_and_eval(random.choice(objects) + '.object')
    fill(value)
    try:
        text = value.format_string()
    except gdb.error as error:
        text = '<error: %s>' % error
    if at % 10 == 0:
        text += gdb.execute('info kest-queue &garbage', to_string=True)
    shown += 1
    if any(sign in text for sign in ('<error', 'Exception', 'Traceback')):
        errors += 1
        print(text[:500])
print('%d objects, %d with an error' % (shown, errors))
end
