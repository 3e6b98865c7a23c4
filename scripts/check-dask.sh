#!/usr/bin/env bash
# Has a Dask cluster of three workers on loopback replay random call records in parts, with the client in BUILD-DIR, and
# kills one of the workers meanwhile: the report and the page must be those of a single replay, to the byte.
# Usage: check-dask.sh BUILD-DIR
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
client=$(cd "$1" && pwd)/tools/callrecordingctl/callrecordingctl
"$source/scripts/install-packages.sh" python3-distributed
scratch=$(mktemp -d)
started=()
trap 'kill "${started[@]}" 2>/dev/null || true; wait; rm -rf "$scratch"' EXIT
cd "$scratch"
export QUVA_PATH=$source/examples/sample/ SOURCE_DATE_EPOCH=1795600000

# Slow enough for a worker to be killed at work; it notes who works.
mkdir bin
printf '#!/bin/sh\necho $PPID >>%s/at-work\nsleep 0.5\nexec %s "$@"\n' "$scratch" "$client" >bin/callrecordingctl
chmod +x bin/callrecordingctl

for i in $(seq 24); do
    awk -v seed="$i" 'BEGIN { srand(seed); print "time,from,to"; for (i = 0; i < 2000; ++i)
        printf "%d,%d,%s%d\n", 1793500000 + rand() * 2592000, 200 + rand() * 60, rand() < 0.5 ? "0" : "", rand() * 1e6 }' \
        >"calls-$i.csv"
done
"$client" replay calls-*.csv --html one.html >one.txt

python3=/usr/bin/python3 # That of the package.
$python3 -m distributed.cli.dask_scheduler --host 127.0.0.1 --port 0 --no-dashboard \
    --scheduler-file scheduler.json 2>scheduler.log &
started+=($!)
workers=()
for _ in 1 2 3; do
    PATH=$scratch/bin:$PATH $python3 -m distributed.cli.dask_worker --scheduler-file scheduler.json --no-nanny \
        --nthreads 1 --no-dashboard --local-directory "$scratch" 2>>worker.log &
    workers+=($!)
done
started+=("${workers[@]}")
until [ -s scheduler.json ]; do sleep 0.1; done
address=$($python3 -c 'import json; print(json.load(open("scheduler.json"))["address"])')

PATH=$(dirname "$client"):$PATH timeout 120 $python3 "$source/examples/replay_on_dask.py" "$address" \
    --html merged.html -- calls-*.csv >merged.txt &
replay=$!
until grep -qsx "${workers[1]}" at-work; do sleep 0.05; done
kill -KILL "${workers[1]}"
wait "$replay" || { cat worker.log; exit 1; }
echo "ok      worker ${workers[1]} was killed at work; $(sort -u at-work | wc -l) had worked, $(wc -l <at-work) parts of 24 begun"
[ "$(wc -l <at-work)" -gt 24 ] || { echo "FAILED  the killed worker had nothing to lose"; exit 1; }
cmp one.txt merged.txt
cmp one.html merged.html
echo "ok      report and page are those of one replay"
