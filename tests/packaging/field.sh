# SPDX-License-Identifier: GPL-2.0-only
# Sourced by the checks that run a whole webctrl: a network, a mount table and a process table of
# their own, in which port 80, /run and everything started are nobody else's and end with the script.
#
#   source field.sh; private_machine "$@"; check NAME COMMAND...; ...; totals

set -uo pipefail
passed=0 failed=0

# Starts the calling script anew in namespaces(7) of its own, with lo up and eth0 on a cable. /run is
# empty there, and all that is in it vanishes with them; $scratch is in it. An ordinary user becomes
# root of a user namespace first, the only user in it.
private_machine() {
  if [ -z "${FIELD_IS_PRIVATE-}" ]; then
    local user=()
    [ "$(id -u)" = 0 ] || user=(--map-root-user)
    FIELD_IS_PRIVATE=1 exec unshare "${user[@]}" --net --mount --pid --fork --kill-child --mount-proc -- "$BASH" "$0" "$@"
  fi
  PATH=$PATH:/usr/sbin:/sbin scratch=/run/scratch peer=/proc/self/ns/net
  # shellcheck source=tests/support/furnish
  source "${BASH_SOURCE%/*}/../support/furnish" && mkdir $scratch
}

# check NAME COMMAND...: passed when the command is. It runs in this shell, and what it leaves in the
# background keeps no pipe of ours open.
check() {
  local name=$1
  shift
  if "$@" >"$scratch/said" 2>&1 </dev/null; then
    ((++passed)) && echo "ok      $name"
  else
    ((++failed)) && echo "FAILED  $name" && sed 's/^/        /' "$scratch/said"
  fi
}

totals() { echo "checks passed: $passed, failed: $failed" && [ "$failed" = 0 ] && [ "$passed" -gt 0 ]; }

# await LINE COMMAND...: starts a program and returns once its output holds LINE; fails when that ends
# first, or after 20 seconds. Its process is $started, its output in $scratch/PROGRAM.log.
await() {
  local log=$scratch/${2##*/}.log
  : >"$log" # there for tail(1) before the program is
  "${@:2}" >>"$log" 2>&1 &
  started=$!
  timeout 20 grep -qF "$1" <(tail -n +1 -f --pid=$started "$log") || { cat "$log" && return 1; }
}

served="Starting web server on port"

# Whether another user can be had.
alone() { [ "$(awk '{ n += $3 } END { print n }' /proc/self/uid_map)" = 1 ]; }

end_started() { kill "$started" && tail --pid="$started" -f /dev/null; }

# fetch PATH [CURL OPTION...]: the body, decompressed; fails on any other status than 200.
fetch() { curl --silent --show-error --fail --max-time 20 --compressed "http://127.0.0.1$1" "${@:2}"; }

# answers PATH TEXT [CURL OPTION...]
answers() { fetch "$1" "${@:3}" | tee /dev/stderr | grep -F "$2"; }

# Every file of the page, whole, plain and compressed.
serves_page() {
  local source=$1 file name
  for file in "$source"/*[!z]; do # no .gz
    name=${file##*/}
    fetch "/$name" | cmp - "$file" || return
    curl --silent --fail --header 'Accept-Encoding: gzip' "http://127.0.0.1/$name" | cmp - "$file.gz" || return
  done
  fetch / | cmp - "$source/index.html"
}

# serves WEB_ROOT COMMAND...: starts it, asks for all of that and ends it.
serves() {
  await "$served 80" "${@:2}" && serves_page "$1" && answers /get_LangInfo '"strLanguage": "CN"' &&
    answers /get_SystemInfo '"result": 1' && answers /get_cpu_usage '"result": 84 }' && end_started
}
