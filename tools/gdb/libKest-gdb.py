"""gdb on Kest: what a TBstr, wide text, a container, a time and the message queue hold.

gdb loads this file by itself where it lies beside libKest or in its own auto-load folder, and
`source` loads it anywhere; docs/debugging.md tells how. It reads memory and calls nothing, so that
it works on core files too. What is broken or was never initialised is named as such.
"""

import time

import gdb
import gdb.printing
import gdb.types

CHUNK = 65536        # bytes read at a time
MOST_BUCKETS = 2**20   # of a map are looked at
MOST_COUNTED = 100000  # messages on a list are counted
MAX_TEXT = 0x7FFFFFFC  # units


class Broken(Exception):
    """What is wrong with an object, in a few words."""


# ---- Memory


def read(address, size):
    """size bytes; Broken where there is no memory."""
    try:
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except (gdb.error, OverflowError, ValueError):
        raise Broken('no memory at %#x' % address) from None


def word(data):
    return int.from_bytes(data, 'little')


def number(value):
    """A field as a Python number; a pointer as its address."""
    return int(value)


def target(pointer):
    """What a pointer points to; Broken where there is no memory."""
    read(number(pointer), pointer.type.strip_typedefs().target().sizeof)
    return pointer.dereference()


def atomic(value):
    """What a std::atomic<T> holds."""
    held = value.type.strip_typedefs().template_argument(0)
    return value.address.reinterpret_cast(held.pointer()).dereference()


def limit():
    """How many elements or units gdb is set to show; None for all."""
    return gdb.parameter('print elements') or None


def symbol_at(address):
    """The name of the function or variable at an address, or ''."""
    text = gdb.execute('info symbol %#x' % address, to_string=True)
    return text.split(' in section ')[0] if ' in section ' in text else ''


# ---- Text

ESCAPES = {'\\': '\\\\', '"': '\\"', '\n': '\\n', '\r': '\\r', '\t': '\\t', '\0': '\\000'}


def escaped(character):
    """A character as it stands in a literal, where gdb's output has it."""
    if character in ESCAPES:
        return ESCAPES[character]
    if character.isprintable():
        try:
            character.encode(gdb.host_charset())
            return character
        except (UnicodeError, LookupError):
            pass
    code = ord(character)
    return '\\u%04x' % code if code < 0x10000 else '\\U%08x' % code


def literal(address, length):
    """The text of length units at an address, as much as gdb is set to show."""
    shown = min(length, limit() or length)
    units = b''.join(read(address + at, min(CHUNK, 2 * shown - at)) for at in range(0, 2 * shown, CHUNK))
    # No pair is cut in two.
    if shown < length and shown > 1 and 0xD8 <= units[-1] < 0xDC:
        units = units[:-2]
    text = units.decode('utf-16-le', 'surrogatepass')
    return 'u"%s"' % ''.join(map(escaped, text)) + ('...' if shown < length else '')


def counted_literal(address, length):
    """The same with the length of a text that is cut."""
    text = literal(address, length)
    return text if length <= (limit() or length) else '%s <%d units>' % (text, length)


def bstr_length(address):
    """The length of a BSTR in units, from the byte count in front of it; Broken when it is none."""
    if address == 0:
        return 0
    size = word(read(address - 4, 4))
    length = size // 2
    if size % 2 != 0 or not 0 < length <= MAX_TEXT:
        raise Broken('no BSTR at %#x, whose byte count would be %d' % (address, size))
    try:
        end = read(address + size, 2)
    except Broken:
        end = None
    if end != b'\0\0':
        raise Broken('no BSTR at %#x, which would end after %d units' % (address, length))
    return length


def terminated_length(address):
    """Units before the first zero unit, and whether there is one among those that gdb shows."""
    length, most = 0, (limit() or MAX_TEXT) + 1
    while length < most:
        # Up to the end of the page: what lies behind need not be there.
        at = address + 2 * length
        size = 4096 - at % 4096
        data = read(at, max(size & ~1, 2))
        for offset in range(0, len(data), 2):
            if data[offset:offset + 2] == b'\0\0':
                return length + offset // 2, True
        length += len(data) // 2
    return length, False


class BstrPrinter:
    """KEST::TBstr, whose text is a BSTR or null."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = number(self.value['string'])
        return counted_literal(text, bstr_length(text))


class TextPrinter:
    """unsigned short*: a BSTR, with the zero units in it, or other text up to its terminator."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        address = number(self.value)
        return '0x0' if address == 0 else '%#x %s' % (address, self.text(address))

    def text(self, address):
        try:
            length, ends = terminated_length(address)
            counted = self.counted(address)
            # A byte count that is in the way of nothing, or that only a block from a heap has.
            if counted is not None and (counted == length or not ends or not symbol_at(address)):
                return counted_literal(address, counted)
            return literal(address, length)
        except Broken as broken:
            return '<%s>' % broken

    @staticmethod
    def counted(address):
        # Blocks are aligned to 8 bytes or more, and the byte count takes four.
        try:
            return bstr_length(address) if address % 8 == 4 else None
        except Broken:
            return None


class TimePrinter:
    """KEST::TTime."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        seconds = number(self.value['time'])
        try:
            t = time.gmtime(seconds)
        except (OverflowError, OSError, ValueError):
            return '<beyond the calendar> (%d)' % seconds
        return '%04d-%02d-%02d %02d:%02d:%02d UTC (%d)' % (*t[:6], seconds)


class GuidPrinter:
    """KEST::_GUID."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        rest = ''.join('%02x' % number(self.value['data4'][i]) for i in range(8))
        return '{%08x-%04x-%04x-%s-%s}' % (number(self.value['data1']), number(self.value['data2']),
                                           number(self.value['data3']), rest[:4], rest[4:])


# ---- Containers
#
# Each has a check, which raises Broken when no valid object has such fields, a title, and elements,
# which may find out later that it is broken and then ends with a remark.


class ContainerPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        self.check()
        return '%s %s' % (self.value.type.strip_typedefs().unqualified().name, self.title())

    def children(self):
        index = 0
        try:
            self.check()
        except (Broken, gdb.error):
            return
        try:
            for element in self.elements():
                yield '[%d]' % index, element
                index += 1
        except (Broken, gdb.error) as broken:
            yield from self.remark(index, '<%s>' % broken)

    def remark(self, index, text):
        yield '[%d]' % index, text


class ArrayPrinter(ContainerPrinter):
    """KEST::TPtrArray."""

    def check(self):
        data, size, capacity = (number(self.value[f]) for f in ('data', 'size', 'maxSize'))
        if not 0 <= size <= capacity or (data == 0) != (capacity == 0):
            raise Broken('no TPtrArray: size %d, capacity %d, storage at %#x' % (size, capacity, data))
        if size > 0:
            pointer = self.value['data'].type.target().sizeof
            read(data, pointer)
            read(data + (size - 1) * pointer, pointer)

    def title(self):
        return 'of length %d, capacity %d' % (number(self.value['size']), number(self.value['maxSize']))

    def elements(self):
        for index in range(number(self.value['size'])):
            yield self.value['data'][index]

    def display_hint(self):
        return 'array'


class ListPrinter(ContainerPrinter):
    """KEST::TPtrList."""

    def check(self):
        head, tail, count = (number(self.value[f]) for f in ('head', 'tail', 'count'))
        if count < 0 or (head == 0) != (count == 0) or (tail == 0) != (count == 0):
            raise Broken('no TPtrList: count %d, head at %#x, tail at %#x' % (count, head, tail))
        if head != 0:
            target(self.value['head'])

    def title(self):
        return 'of length %d' % number(self.value['count'])

    def elements(self):
        node, before = self.value['head'], 0
        for _ in range(number(self.value['count'])):
            if number(node) == 0:
                raise Broken('no node follows')
            if number(target(node)['prev']) != before:
                raise Broken('the node at %#x does not lead back' % number(node))
            yield node['data']
            before, node = number(node), node['next']
        if number(node) != 0 or before != number(self.value['tail']):
            raise Broken('the tail is at %#x' % number(self.value['tail']))

    def display_hint(self):
        return 'array'


def bucket_heads(table, size):
    """The first entry of each bucket that has one."""
    width = table.type.target().sizeof
    looked_at = min(size, MOST_BUCKETS)
    for start in range(0, looked_at, CHUNK // width):
        count = min(CHUNK // width, looked_at - start)
        data = read(number(table) + start * width, count * width)
        for at in range(0, len(data), width):
            if any(data[at:at + width]):
                yield gdb.Value(word(data[at:at + width])).cast(table.type.target())


def map_entries(value):
    """The entries of a map in the order of its iteration."""
    count, size = number(value['count']), number(value['hashTableSize'])
    found = 0
    if number(value['hashTable']) != 0:
        for head in bucket_heads(value['hashTable'], size):
            entry, seen = head, set()
            while number(entry) != 0:
                if number(entry) in seen:
                    raise Broken('the entry at %#x follows itself' % number(entry))
                if found == count:
                    raise Broken('more entries follow')
                seen.add(number(entry))
                yield target(entry)
                found += 1
                entry = entry['next']
    if found != count:
        raise Broken('%d in no bucket' % (count - found) if size <= MOST_BUCKETS else
                     '%d not looked for in more than %d buckets' % (count - found, MOST_BUCKETS))


class MapPrinter(ContainerPrinter):
    """KEST::TPtrFromPtrMap, TPtrFromBstrMap and TPtrFromGuidMap."""

    def check(self):
        table, size, count = (number(self.value[f]) for f in ('hashTable', 'hashTableSize', 'count'))
        if count < 0 or size == 0:
            raise Broken('no map: count %d, %d buckets' % (count, size))
        if table != 0:
            pointer = self.value['hashTable'].type.target().sizeof
            read(table, pointer)
            read(table + (size - 1) * pointer, pointer)

    def title(self):
        made = '' if number(self.value['hashTable']) else ', not made'
        return 'of length %d, %d buckets%s' % (number(self.value['count']), number(self.value['hashTableSize']), made)

    def elements(self):
        for entry in map_entries(self.value):
            yield entry['key']
            yield entry['value']

    def remark(self, index, text):
        yield from super().remark(index, text)
        yield from super().remark(index + 1, '...')

    def display_hint(self):
        return 'map'


class FifoPrinter(ContainerPrinter):
    """KEST::TFifoBuffer."""

    def check(self):
        buffer, capacity, length = (number(self.value[f]) for f in ('buffer', 'capacity', 'length'))
        if not 0 <= length <= capacity or (buffer == 0) != (capacity == 0):
            raise Broken('no TFifoBuffer: length %d, capacity %d, block at %#x' % (length, capacity, buffer))
        if length > 0:
            read(buffer, 1)
            read(buffer + length - 1, 1)

    def title(self):
        return 'of length %d, capacity %d' % (number(self.value['length']), number(self.value['capacity']))

    def elements(self):
        for index in range(number(self.value['length'])):
            # As a number: bytes are rarely text here.
            yield number(self.value['buffer'][index])

    def display_hint(self):
        return 'array'


class PlexPrinter:
    """KEST::SPlex, a block in a chain."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        older, seen, block = 0, set(), self.value['next']
        most = limit() or MOST_COUNTED
        while number(block) != 0 and older < most:
            if number(block) in seen:
                raise Broken('the block at %#x follows itself' % number(block))
            seen.add(number(block))
            block = target(block)['next']
            older += 1
        return 'KEST::SPlex with %s%d older blocks' % ('at least ' if number(block) else '', older)


# ---- Messages

QUIT = 0xFFFFFFFF


def file_of(function):
    """What is local to the library's file with this exported function."""
    symbol = gdb.lookup_global_symbol(function)
    if symbol is None:
        raise Broken('there is no debug information of libKest')
    return symbol.symtab.static_block()


def variable_beside(function, name):
    for symbol in file_of(function):
        if symbol.is_variable and symbol.name.split('::')[-1] == name:
            return symbol.value()
    raise Broken('this libKest has no %s' % name)


def queue_type(name):
    try:
        return gdb.lookup_type(name, file_of('KEST::InternalPostMessage'))
    except gdb.error:
        raise Broken('this libKest has no %s' % name) from None


def lane_depth(lane):
    bits = 8 * lane['posted'].type.sizeof
    return (number(lane['posted']) - number(lane['takes'])) % 2**bits


def lane_messages(lane):
    """The messages that can be taken from a TMessageLane."""
    block, slot, seen = lane['takeBlock'], number(lane['takeSlot']), set()
    while number(block) != 0:
        if number(block) in seen:
            raise Broken('the block at %#x follows itself' % number(block))
        seen.add(number(block))
        slots = target(block)['slots']
        for at in range(slot, slots.type.range()[1] + 1):
            if number(atomic(slots[at]['filled'])) == 0:
                return
            yield slots[at]['message']
        block, slot = atomic(block['next']), 0


def list_messages(messages):
    """The messages on a TMessageList."""
    apart = number(atomic(messages['s_owner'])) == number(messages.address)
    node = atomic(messages['s_front'] if apart else messages['front'])
    if number(node) == number(messages['s_taking'].address):
        raise Broken('those on the list are not in sight while a thread takes one')
    record, seen = queue_type('KEST::SMessage').pointer(), set()
    while number(node) != 0:
        if number(node) in seen:
            raise Broken('the node at %#x follows itself' % number(node))
        seen.add(number(node))
        yield target(target(node)['data'].cast(record))
        node = node['next']


def queue_messages(queue):
    """The waiting messages, oldest first: those on the lane were posted before those on the list."""
    if number(queue['lane']) != 0:
        yield from lane_messages(target(queue['lane']))
    yield from list_messages(queue['list'])


def queue_depth(queue):
    """How many messages wait, as text."""
    depth = lane_depth(target(queue['lane'])) if number(queue['lane']) != 0 else 0
    counted = 0
    for _ in list_messages(queue['list']):
        counted += 1
        if counted == MOST_COUNTED:
            return 'at least %d' % (depth + counted)
    return str(depth + counted)


class QueuePrinter(ContainerPrinter):
    """The queue behind the handle that InternalCreateMessageQueue gives."""

    @staticmethod
    def shows(kind):
        # A program may have the name for something of its own.
        return gdb.types.has_field(kind, 'lane') and gdb.types.has_field(kind, 'availableCallback')

    def check(self):
        queue_depth(self.value)

    def title(self):
        return 'of depth %s' % queue_depth(self.value)

    def elements(self):
        yield from queue_messages(self.value)

    def display_hint(self):
        return 'array'


def callbacks():
    """The registered callbacks' addresses by identifier."""
    registry = variable_beside('KestLookupMessageCallback', 's_registry')
    if number(registry) == 0:
        return {}
    try:
        return {number(entry['key']): number(entry['value']) for entry in map_entries(target(registry))}
    except Broken:
        return {}


def describe(message, registered):
    identifier = number(message['id'])
    title = 'quit' if identifier == QUIT else 'id %d' % identifier
    if identifier in registered:
        title += ' to %s' % (symbol_at(registered[identifier]) or '%#x' % registered[identifier])
    return '%s, param1 = %s, param2 = %s' % (title, message['param1'], message['param2'])


class InfoQueue(gdb.Command):
    """Shows the messages that wait in Kest's message queue, oldest first.

Usage: info kest-queue [HANDLE]

Without an argument it is the process's queue; HANDLE is what KEST::InternalCreateMessageQueue gave.
"set print elements" says how many are shown."""

    def __init__(self):
        super().__init__('info kest-queue', gdb.COMMAND_DATA, gdb.COMPLETE_EXPRESSION)

    def invoke(self, argument, from_tty):
        try:
            self.show(argument)
        except (Broken, gdb.MemoryError) as broken:
            print('The queue cannot be shown: %s.' % broken)

    @staticmethod
    def show(argument):
        handle = gdb.parse_and_eval(argument) if argument else variable_beside('KestPostMessage', 's_queue')
        if number(handle) == 0:
            print('There is no queue: the library is not started.')
            return
        queue = target(handle.cast(queue_type('(anonymous namespace)::SMessageQueue').pointer()))
        depth = queue_depth(queue)
        print('%s message%s.' % (depth, ' waits' if depth == '1' else 's wait'))
        available = number(queue['availableCallback'])
        if available != 0:
            print('Announced to %s.' % (symbol_at(available) or '%#x' % available))
        registered = callbacks()
        most = limit()
        for index, message in enumerate(queue_messages(queue)):
            if index == most:
                print('...')
                break
            print('[%d] %s' % (index, describe(message, registered)))


# ---- Which printer shows what

BY_NAME = {
    'KEST::TBstr': BstrPrinter,
    'KEST::TTime': TimePrinter,
    'KEST::_GUID': GuidPrinter,
    'KEST::TPtrArray': ArrayPrinter,
    'KEST::TPtrList': ListPrinter,
    'KEST::TPtrFromPtrMap': MapPrinter,
    'KEST::TPtrFromBstrMap': MapPrinter,
    'KEST::TPtrFromGuidMap': MapPrinter,
    'KEST::TFifoBuffer': FifoPrinter,
    'KEST::SPlex': PlexPrinter,
    '(anonymous namespace)::SMessageQueue': QueuePrinter,
}


def is_text_pointer(kind):
    """unsigned short*, const or not. A number under another name, as uint16_t, is no text."""
    if kind.code != gdb.TYPE_CODE_PTR:
        return False
    unit = kind.target().unqualified()
    return unit.code == gdb.TYPE_CODE_INT and unit.name in ('short unsigned int', 'unsigned short')


def careful(printer):
    """The printer, with a remark in place of an exception."""

    class Careful(printer):
        shows = getattr(printer, 'shows', lambda kind: True)

        def to_string(self):
            try:
                return super().to_string()
            except (Broken, gdb.error) as broken:
                return '<%s>' % broken

    return Careful


class Printers(gdb.printing.PrettyPrinter):
    """All of them, each to be switched off by its name: disable pretty-printer .*Kest.* kest;text"""

    def __init__(self):
        self.by_name = {name: (gdb.printing.SubPrettyPrinter(name.split('::')[-1]), careful(printer))
                        for name, printer in BY_NAME.items()}
        self.text = gdb.printing.SubPrettyPrinter('text'), careful(TextPrinter)
        super().__init__('kest', [named for named, _ in (*self.by_name.values(), self.text)])

    def __call__(self, value):
        if value.type.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        kind = value.type.strip_typedefs().unqualified()
        named, printer = self.text if is_text_pointer(kind) else self.by_name.get(kind.name, (None, None))
        return printer(value) if named is not None and named.enabled and printer.shows(kind) else None


gdb.printing.register_pretty_printer(gdb.current_objfile(), Printers(), replace=True)
InfoQueue()
