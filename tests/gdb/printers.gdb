# Stops in each scene of printers.cpp and prints what it holds.

set width 0
set height 0
set print symbol off
set startup-with-shell off
set disable-randomization off
break Stop
commands
  silent
  up-silently
end

define see
  echo $arg0:\040
  output $arg0
  echo \n
end

echo == NoQueue\n
run
info kest-queue

echo == Texts\n
continue
see none
see plain
see accents
see pair
see halves
see inner
see million
see reference
see bstr
see withZeros
see longBstr
see text
see noText
see longText
see number
set print elements 2
see plain
see pair
see text
set print elements 0
see plain
python print(len(gdb.parse_and_eval('million').format_string()))
set print elements 200
set host-charset ASCII
see accents
set host-charset UTF-8
info locals plain
disable pretty-printer .*Kest.* kest;text
see bstr
enable pretty-printer .*Kest.* kest;text
see bstr

echo == Times\n
continue
see epoch
see day
see before
see guid

echo == Containers\n
continue
see noArray
see array
see noList
see list
see noMap
see pointers
see texts
see guids
see lost
see noBytes
see bytes
set print elements 4
see large
see array
set print elements 200
see wide
see *chain
set print pretty on
see array
see texts
set print pretty off

echo == Broken\n
continue
see bstr.object
see array.object
see list.object
see map.object
see zeroMap.object
see textMap.object
see bytes.object
see plex.object
see odd.object
see unended.object
see circle.object
see cut.object
see loop.object
see round.object
see nowhere
set print elements 0
see circle.object
see loop.object
see round.object
set print elements 200

echo == EmptyQueue\n
continue
info kest-queue

echo == MessagesInLane\n
continue
info kest-queue
set print elements 2
info kest-queue
set print elements 200

echo == MessagesOnList\n
continue
info kest-queue
info kest-queue older
info kest-queue newer
# As while another thread takes the oldest one.
set $front = KEST::TMessageList::s_front._M_b._M_p
set var KEST::TMessageList::s_front._M_b._M_p = &KEST::TMessageList::s_taking
info kest-queue
set var KEST::TMessageList::s_front._M_b._M_p = $front
python
def queue(handle):
    beside = gdb.lookup_global_symbol('KEST::InternalPostMessage').symtab.static_block()
    kind = gdb.lookup_type('(anonymous namespace)::SMessageQueue', beside)
    return gdb.parse_and_eval(handle).cast(kind.pointer()).dereference()
print(queue('older'))
end

echo == BrokenQueue\n
continue
info kest-queue queue
info kest-queue 16
info kest-queue 0

python print(queue('queue'))
# A type of the program with the same name.
python print(gdb.parse_and_eval('s_queue'))

continue
