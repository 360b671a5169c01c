#!/bin/sh
# Runs every benchmark of a release build and prints one line for each bound:
#
#   tools/bench.sh [BUILD_FOLDER]
#
# Both sides of a ratio take turns, so other work on the machine does no harm as
# long as it is the same for both. Ends with 1 when a bound is missed.
set -u

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
program=$build/bin/varnokctl
peer=$build/bench/econtact_peer
[ -x "$peer" ] || peer=

missed=0
run() {
  "$build/bench/$@" || missed=1
}
run backup_bench "$program"
run zip_bench
run photos_bench "$program"
run import_bench "$program"
run startup_bench "$program"
run records_bench
run upload_bench
run peers_bench "$program" "$peer" /usr/bin/python3 "$root/bench/vobject_peer.py"
# With a service of its own, which holds nobody but these people.
if [ -x "$build/bench/eds_bench" ]; then
  "$root/tests/support/with_private_bus.sh" "$build/bench/eds_bench" "$program" "$build/bench/libebook_peer" || missed=1
fi
exit $missed
