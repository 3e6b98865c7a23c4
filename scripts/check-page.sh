#!/usr/bin/env bash
# Has the client in BUILD-DIR write the page of a replay, and the service there its own page, and Chromium show them on a
# telephone and a wide screen, and the first on paper: nothing may appear in the console, the picture may not be blank, the page may not be wider than the screen, and the
# page of the replay must show the same numbers as the JSON.
# Usage: check-page.sh BUILD-DIR
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)
"$source/scripts/install-packages.sh" chromium curl jq
scratch=$(mktemp -d)
service=
trap '[ -z "$service" ] || kill "$service"; rm -rf "$scratch"' EXIT
cd "$scratch"

fail() {
    echo "FAILED  $1"
    exit 1
}

# browse PAGE OPTION...: prints what Chromium prints; fails if it complains.
browse() {
    rm -rf profile
    timeout 120 chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run \
        --disable-background-networking --disable-component-update --disable-sync \
        --hide-scrollbars --user-data-dir="$scratch/profile" --enable-logging=stderr \
        "${@:2}" "file://$scratch/$1" 2>log
    grep CONSOLE log >console || true
    [ ! -s console ] || fail "the console says: $(cat console)"
}

replay() {
    QUVA_PATH=$source/examples/sample/ "$build/tools/callrecordingctl/callrecordingctl" replay \
        "$source"/examples/calls/* "$@"
}

# The page of the service after a few calls, a failed load and a trial, as curl gets it.
service_page() {
    local ask=(curl -sSf --retry 20 --retry-all-errors --retry-delay 1 --unix-socket socket)
    mkdir -p config
    cp -r "$source/examples/sample/telephony" config
    "$build/tools/callrecordingd/callrecordingd" --config-dir config --socket socket 2>notices &
    service=$!
    for to in 112 0044123456 501; do
        "${ask[@]}" "http://localhost/decide?from=201&to=$to" >/dev/null
    done
    echo broken >config/telephony/callrecordingdb
    until "${ask[@]}" http://localhost/metrics | grep -qx 'callrecording_load_failing 1'; do
        sleep 0.1
    done
    "${ask[@]}" 'http://localhost/?from=500&to=501'
}

replay --html page.html --json >report.json
service_page >service.html
echo '<!DOCTYPE html><title>blank</title>' >blank.html
for width in 400 1400; do
    for page in page service blank; do
        browse $page.html --window-size=$width,1200 --screenshot="$scratch/$page.png" >/dev/null
    done
    blank=$(stat -c %s blank.png)
    for page in page service; do
        picture=$(stat -c %s $page.png)
        [ "$picture" -gt $((blank * 5)) ] ||
            fail "at $width pixels the picture of $page has $picture bytes, a blank one $blank"
        # The pages have no script. A copy of it gets one, which counts what extends beyond the right edge.
        sed "s|</body>|<script>document.title = [...document.querySelectorAll('*')].filter(e => \
e.getBoundingClientRect().right > innerWidth + 1).length + ' too wide';</script>&|" \
            $page.html >measured.html
        browse measured.html --window-size=$width,1200 --dump-dom >dom.html
        grep -qF '<title>0 too wide</title>' dom.html || fail "$page is wider than $width pixels"
        echo "ok      $page: a picture of $picture bytes at $width pixels"
        [ -z "${PICTURES:-}" ] || cp $page.png "$PICTURES/$page-$width.png"
    done
done

browse page.html --print-to-pdf="$scratch/page.pdf" >/dev/null
[ "$(stat -c %s page.pdf)" -gt 10000 ] || fail "the page on paper is blank"
echo "ok      on paper"

browse page.html --dump-dom >dom.html
jq -r '(.rules[], .not_recorded) | .calls' report.json >wanted
sed -nE '/<tr id="rule-/,/<\/tr>/ s/.*<data value="([0-9]+)">.*/\1/p' dom.html >shown
diff wanted shown || fail "the numbers of the page are not those of the JSON"
[ -s wanted ] || fail "there are no numbers"
echo "ok      $(wc -l <wanted) numbers as in the JSON"
