# shellcheck shell=bash disable=SC2034
# Shared by ./try and ./check: set-up of the machine and steps that report themselves.
#
# A step is one line: its name, how it ended, its time, its log. On a terminal the line ticks while
# the step runs. When a step fails, the end of its log and the command that repeats it follow.

set -u
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root" || exit 1
logs=build/log
started=$EPOCHREALTIME
jobs=$(nproc 2>/dev/null || echo 2)
[ -t 1 ] && terminal=yes || terminal=

# Compilers, tests and checkers leave their temporary files below build/ too.
mkdir -p build/tmp
export TMPDIR=$root/build/tmp

# seconds_since TIME: with one decimal.
seconds_since() {
  local us=$((${EPOCHREALTIME/[.,]/} - ${1/[.,]/}))
  printf '%d.%d' $((us / 1000000)) $((us / 100000 % 10))
}

# report NAME STATE SECONDS [LOG]: on a terminal over the line before, with the state in colour.
report() {
  local state colour=32
  printf -v state '%-7s' "$2"
  [ "$2" = ok ] || colour=31
  [ -z "$terminal" ] || [ -n "${NO_COLOR-}" ] || state=$'\033['"${colour}m$state"$'\033[0m'
  printf '%s%-34s %s %6ss%s\n' "${terminal:+$'\r\033[K'}" "$1" "$state" "$3" "${4:+   $4}"
}

# die MESSAGE...: a line each, and the end.
die() {
  printf '%s\n' "$@" >&2
  exit 1
}

# try_step NAME LOG COMMAND...: runs the command with its output in build/log/LOG.log and says how it
# went. Returns the command's status.
try_step() {
  local name=$1 log=$logs/$2.log begin=$EPOCHREALTIME status
  shift 2
  mkdir -p "$logs"
  if [ -n "$terminal" ]; then
    "$@" >"$log" 2>&1 </dev/null &
    local pid=$!
    trap 'kill "$pid" 2>/dev/null; printf "\n"; exit 130' INT
    while kill -0 "$pid" 2>/dev/null; do
      printf '\r\033[K%-34s %-7s %6ss' "$name" '...' "$(seconds_since "$begin")"
      sleep 0.2
    done
    wait "$pid"
    status=$?
    trap - INT
  else
    "$@" >"$log" 2>&1 </dev/null
    status=$?
  fi
  if [ $status -eq 0 ]; then
    report "$name" ok "$(seconds_since "$begin")" "$log"
  else
    report "$name" FAILED "$(seconds_since "$begin")" "$log"
    echo "the last lines of $log:"
    tail -n 20 "$log" | sed 's/^/  | /'
    # A function of ours is repeated by the variable's command, anything else by itself.
    printf 'to repeat this step:\n  %s\n' "${repeat:-$(printf '%q ' "$@")}"
  fi
  return $status
}

# step: try_step that ends the script when it fails.
step() { try_step "$@" || exit 1; }

missing_packages() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || echo "$package"
  done
}

# apt's own time-out covers dpkg's lock; the lock of the package lists is waited for by trying again.
apt_get() {
  local attempt
  for attempt in 1 2 3 4 5 6; do
    $sudo env -u TMPDIR DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300 "$@" && return 0
    echo "apt-get $1 failed (attempt $attempt); trying again in 10 seconds"
    sleep 10
  done
  return 1
}

install_packages() { apt_get update && apt_get install -y --no-install-recommends "$@"; }

# need PACKAGE...: installs the Debian packages that are not there. Touches no network when all are.
need() {
  command -v dpkg-query >/dev/null || die "This script installs Debian packages, and there is no dpkg here." \
    "It needs what these packages hold: $*" "Install that your own way; CONTRIBUTING.md shows the plain cmake commands."
  local missing
  missing=$(missing_packages "$@" | tr '\n' ' ')
  missing=${missing% }
  if [ -z "$missing" ]; then
    report 'set-up: every package is present' ok 0.0
    return
  fi
  sudo=
  if [ "$(id -u)" -ne 0 ]; then
    sudo=$(command -v sudo) || die "These packages are missing, and installing them takes root:" \
      "  apt-get update && apt-get install -y --no-install-recommends $missing"
    $sudo true || exit 1  # asks for the password before output goes to the log
  fi
  repeat="${sudo:+sudo }apt-get update && ${sudo:+sudo }apt-get install -y --no-install-recommends $missing"
  # shellcheck disable=SC2086  # one word a package
  step "set-up: install ${missing%% *}$([ "$missing" = "${missing%% *}" ] || echo ' and more')" set-up install_packages $missing
  repeat=
}
