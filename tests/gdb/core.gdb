# A core file made in the scene MessagesInLane.

echo == MessagesInLane\n
up-silently
info locals note
info kest-queue
