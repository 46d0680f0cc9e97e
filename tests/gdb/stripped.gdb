# A library without debug information: what programs hold is shown, what it keeps for itself cannot be.

set startup-with-shell off
set disable-randomization off
break Stop
commands
  silent
  up-silently
end

echo == NoQueue\n
run
info kest-queue

echo == Texts\n
continue
info locals plain
