#!/usr/bin/env bash
# [REGEX [TOOL]]: memcheck and helgrind over the 32-bit tests, or one of them, or the programs whose names match REGEX; any report is a failure

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

only=${1-.} tools=${2-memcheck helgrind}
work=$deep/valgrind
libraries=$work/root/lib/i386-linux-gnu
tests=build/m32/tests
export KEST_TEST_CASES=${KEST_TEST_CASES:-400}  # what differential and stress tests repeat; natively they do more

# What a tool does not run, and why: tool (or any), program, cases as --gtest_filter takes them. There
# are no suppressions: what runs is not to be reported at all.
left_out() {
  cat <<'END'
any       examples/census_test            *  Runs the example as a process of its own, not its code.
any       platform/limits_test            *  Takes memory and descriptors from the whole process, Valgrind included.
any       platform/refusal_test           *  Starts itself again to preload a library, which leaves Valgrind behind.
memcheck  crypto/des_cipher_test          *OnTheStack:*AStackThatHolds*  Reads on purpose what a call has left on the stack.
memcheck  crypto/rc2_cipher_test          *OnTheStack  The same.
memcheck  crypto/rsa_public_cipher_test   *OnTheStack  The same.
any       string/own_free_test            *  Has a free of its own, which is not Valgrind's.
any       sweep/sweep_hooks_preload_test  *  Tests hooks that are preloaded, and here they are not.
any       thread/cancel_test              FormerBug.*  Runs out of memory in a process of its own, and Valgrind with it.
helgrind  message/message_queue_test      *.TheCallbackMayBeSetWhileAnotherThreadPosts  Its fields are accessed atomically, which Helgrind does not follow; thread sanitizer does.
helgrind  message/message_order_test      *.SeveralGettersShareTheMessages:*.AWaitingConsumerMissesNothing  Messages change hands by atomic accesses: the same.
helgrind  message/message_queue_test      Flood.*:*.ABlockedGetReturnsAnotherThreadsMessage:*.ANullCallbackReturnsToSignalling:*.TheLoopRunsWhatAnotherThreadPosts  The same.
helgrind  bridge/eventfd_test            *.AfterItTheQueueWakesItsLoopAgain:*.NoWakeUpIsLost:*.CloseAndWaitRace:*.PostersMayBeInTheCallbackAtTheEnd  The same.
helgrind  message/message_test            *.CallbacksRunOnTheThreadOfTheLoop  The same.
helgrind  stress/message_stress_test      *  The same.
helgrind  thread/sync_test                *.CallersWithoutALockLoseCountsAtMost  The same.
helgrind  sweep/argument_sweep_test       *.Thread  The C library's own timed wait signals without the lock.
helgrind  thread/cond_var_test            *.WaitEndsWithAnotherThreadsSignal  Signals without the lock on purpose, which Helgrind calls dubious.
helgrind  thread/system_info_test         *.FirstCallsMayComeFromSeveralThreads  Published by atomic accesses, which Helgrind does not follow; thread sanitizer does.
helgrind  thread/thread_test              *.CannotWaitForItself  The join is refused on purpose.
END
}

# The library itself, which takes its plain routines under Valgrind: the fast ones read whole vectors, past the end of
# a text within its page, which is what Memcheck is there to report.
ours=$root/build/m32

# Programs with a process for each case, because their cases start from a library that nobody has started.
one_by_one='^frame/start_order_test$'

# The 32-bit C library with its symbols, without which Valgrind does not start. What g++-multilib
# installs is another build than the one that there are symbols for, so that one is unpacked below
# build/, and its loader runs the tests. The system's own list of architectures stays as it is.
fetch() {
  local debs=$work/debs package
  rm -rf "$work/root"
  mkdir -p "$work"/apt/lists/partial "$work"/apt/cache/archives/partial "$debs"
  cat >"$work/apt.conf" <<END
APT::Architecture "i386";
APT::Architectures { "i386"; };
APT::Sandbox::User "root";
Dir::State::Lists "$work/apt/lists";
Dir::Cache "$work/apt/cache";
END
  apt-get -c "$work/apt.conf" update
  (cd "$debs" && apt-get -c "$work/apt.conf" download libc6 libc6-dbg libgcc-s1 libstdc++6) || return 1
  for package in "$debs"/*.deb; do dpkg -x "$package" "$work/root" || return 1; done
  mkdir "$libraries/.debug"
  # Beside the libraries Valgrind looks for the file that a library names.
  find "$work/root/usr/lib/debug/.build-id" -name '*.debug' -exec ln -sf -t "$libraries/.debug" {} +
}

# arguments TOOL NAME: a line for each process to start, with what the program is given there. A fuzz
# target takes its corpus, a test program its cases, all in one process where they allow it.
arguments() {
  local name=${2##*/} filter
  case $name in *_fuzz) echo "tests/fuzz/corpus/${name%_fuzz}"; return ;; esac
  filter=$(left_out | awk -v tool="$1" -v name="$2" '
    ($1 == tool || $1 == "any") && $2 == name { out = out ":" $3 }
    END { print (out == "" ? "*" : "*-" substr(out, 2)) }')
  if [[ $2 =~ $one_by_one ]]; then
    "$tests/$2" --gtest_list_tests --gtest_filter="$filter" |
      awk '/^[^ ].*\.$/ { suite = $1 } /^ / { print "--gtest_filter=" suite $1 }'
  else
    echo "--gtest_filter=$filter"
  fi
}

# check TOOL NAME: a line with the tool, the program, how many cases ran, and the logs of what went wrong.
check() {
  local tool=$1 log=$work/$1/${2//\//-} option=--leak-check=full wrong='' number=0 argument
  [ "$tool" = memcheck ] || option=--history-level=approx
  rm -f "$log"-*
  while read -r argument; do
    number=$((number + 1))
    timeout 1800 valgrind --tool="$tool" "$option" --error-exitcode=99 --soname-synonyms=somalloc=nouserintercepts \
      --log-file="$log-$number.log" \
      "$libraries/ld-linux.so.2" --library-path "$ours:$libraries:$work/root/usr/lib/i386-linux-gnu" \
      "$tests/$2" "$argument" >"$log-$number.out" 2>&1 </dev/null || wrong="$wrong $log-$number.log"
  done < <(arguments "$tool" "$2")
  echo "$tool $2 $(cat "$log"-*.out | grep -cE '^\[       OK \]|^tests/fuzz/corpus/')${wrong:+ FAILED:$wrong}"
  [ -z "$wrong" ]
}

# May a second thread run?
starts_threads() {
  nm -D --undefined-only -C "$tests/$1" |
    grep -qE 'pthread_create|KestCreateThread|TThread::Create|std::thread::_M_start_thread'
}

# pass TOOL PROGRAM...: as many at a time as there are processors.
pass() {
  local tool=$1
  shift
  mkdir -p "$work/$tool"
  export -f check arguments left_out
  export tests work libraries ours one_by_one GTEST_COLOR=no
  printf '%s\n' "$@" | xargs -P "$jobs" -I {} bash -c "check $tool {}"
}

# publish TOOL PROGRAM...: runs the pass and writes down its figures.
publish() {
  local tool=$1 log=$logs/deep-valgrind-$1.log status=0
  [ $# -gt 1 ] || return 0
  try_step "$tool: $(($# - 1)) programs" "deep-valgrind-$tool" pass "$@" || status=1
  [ "$only" = . ] || return $status  # the figures are those of the whole suite
  figure "programs under $tool" "$(grep -c "^$tool " "$log")"
  figure "cases under $tool" "$(awk -v tool="$tool" '$1 == tool { n += $3 } END { print n + 0 }' "$log")"
  figure "reports of $tool" "$(cat "$work/$tool"/*.log | awk '/ERROR SUMMARY:/ { n += $4 } END { print n + 0 }')"
  return $status
}

need g++ g++-multilib cmake ninja-build googletest valgrind binutils
step 'configure m32' deep-valgrind-configure cmake --preset m32
step 'build m32' deep-valgrind-build cmake --build build/m32 --parallel "$jobs"
[ -e "$libraries/.debug" ] || step 'fetch the 32-bit C library' deep-valgrind-fetch fetch

programs=() threaded=()
for program in $(cd $tests && find . -name '*_test' -type f -executable -o -name '*_fuzz' -type f -executable | sed 's/^..//' | sort | grep -E -- "$only"); do
  left_out | grep -qE "^any +$program +\* " && continue
  programs+=("$program")
  ! starts_threads "$program" || threaded+=("$program")
done
[ ${#programs[@]} -gt 0 ] || die "valgrind: no test program matches $only"

failed=
for tool in $tools; do
  case $tool in
    memcheck) publish memcheck "${programs[@]}" || failed=yes ;;
    helgrind) publish helgrind "${threaded[@]}" || failed=yes ;;  # nothing to see for it where no thread starts
    *) die "valgrind: no such tool here: $tool" ;;
  esac
done
[ -z "$failed" ]
