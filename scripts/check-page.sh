#!/usr/bin/env bash
# Has the client in BUILD-DIR write the page of a replay, and the service there its own page, and Chromium show them on a
# telephone and a wide screen, light and dark, and the first on paper: nothing may appear in the console, the picture may
# not be blank, and the page may not be wider than the screen. The page of the replay must have contrasts of 4.5, captions
# and scopes, show the same numbers as the JSON, and print in the wide layout, with its title and a number on each page.
# Usage: check-page.sh BUILD-DIR
set -euo pipefail

source=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd)
"$source/scripts/install-packages.sh" chromium curl jq poppler-utils
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

client() {
    QUVA_PATH=$scratch/rules/ "$build/tools/callrecordingctl/callrecordingctl" "$@"
}

# A replay with all that a page can have: rules that changed, missing recordings, claims, and a wrong clock.
replay() {
    client replay "$source"/examples/calls/* calls.csv --policy policy --system pbx "$@"
}

prepare() {
    mkdir rules
    cp -r "$source/examples/sample/telephony" rules
    client delete 5 >/dev/null 2>&1
    printf '%s\n' "--to 112 --recorded" "--to '5??' --recorded" >policy
    now=$(date +%s)
    {
        echo calldate,src,dst,recordingfile
        for i in $(seq 200); do
            file=a.wav
            [ $((i % 9)) != 0 ] || file=
            echo "$(date -d "@$((now + (i - 100) * 3600))" '+%F %T'),2$((i % 90 + 10)),0$i,$file"
        done
        echo 1970-01-01 00:00:00,201,112,
    } >calls.csv
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

# Pages have no script. A copy of one gets this, which puts what it finds into the title: what extends beyond the right
# edge, what a table lacks, and what has less contrast than 4.5.
cat >measure.html <<'EOF'
<script>
const parse = c => (c.match(/[\d.]+/g) || []).map(Number);
const light = c => { const [r, g, b] = c.map(v => (v /= 255) <= .03928 ? v / 12.92 : ((v + .055) / 1.055) ** 2.4);
    return .2126 * r + .7152 * g + .0722 * b; };
const ratio = (a, b) => { const [x, y] = [light(a), light(b)].sort((p, q) => q - p); return (x + .05) / (y + .05); };
const behind = e => { for (; e; e = e.parentElement) { const c = parse(getComputedStyle(e).backgroundColor);
    if (c.length && (c.length == 3 || c[3] > 0)) return c.slice(0, 3); } return [255, 255, 255]; };
const all = [...document.body.querySelectorAll('*')].filter(e => !e.matches('script, title')), faint = [];
const look = (e, color, back) => { const r = ratio(parse(color).slice(0, 3), back);
    if (r < 4.5) faint.push(e.tagName + '.' + e.getAttribute('class') + ' ' + r.toFixed(2)); };
for (const e of all) {
    const style = getComputedStyle(e);
    if ([...e.childNodes].some(n => n.nodeType == 3 && n.data.trim())) look(e, style.color, behind(e));
    if (e.matches('rect')) look(e, style.fill, behind(e.closest('.chart')));
    if (e.matches('.bar i, .legend i')) look(e, style.backgroundColor, behind(e.parentElement));
}
const wide = all.filter(e => e.getBoundingClientRect().right > innerWidth + 1).length;
const lacking = document.querySelectorAll('th:not([scope])').length +
    [...document.querySelectorAll('table')].filter(t => !t.caption || !t.caption.textContent).length;
document.title = wide + ' too wide, ' + lacking + ' lacking, ' + faint.length + ' faint ' +
    [...new Set(faint)].slice(0, 5) + ', ' + (matchMedia('(prefers-color-scheme: dark)').matches ? 'dark' : 'light');
</script>
EOF

# measured PAGE WIDTH light|dark: what the script finds.
measured() {
    local preferred=1
    [ "$3" = light ] || preferred=0
    sed '/<\/body>/r measure.html' "$1.html" >measured.html
    browse measured.html --window-size="$2",1200 --blink-settings=preferredColorScheme=$preferred --dump-dom |
        grep -o -m1 '<title>[^<]*too wide[^<]*</title>'
}

prepare
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
        [ -z "${PICTURES:-}" ] || cp $page.png "$PICTURES/$page-$width.png"
        for scheme in light dark; do
            found=$(measured $page $width $scheme)
            case "$page $found" in
            "page <title>0 too wide, 0 lacking, 0 faint , $scheme</title>" | "service <title>0 too wide,"*) ;;
            *) fail "$page at $width pixels, $scheme: $found" ;;
            esac
        done
        echo "ok      $page: a picture of $picture bytes at $width pixels, light and dark"
    done
done

browse page.html --no-pdf-header-footer --print-to-pdf="$scratch/page.pdf" >/dev/null
[ -z "${PICTURES:-}" ] || cp page.pdf "$PICTURES/page.pdf"
pages=$(pdfinfo page.pdf | sed -n 's/^Pages: *//p')
[ "$pages" -ge 2 ] && [ "$pages" -le 30 ] || fail "on paper it has $pages pages"
pdfinfo page.pdf | grep -q A4 || fail "the paper is not A4"
for number in $(seq "$pages"); do
    pdftotext -f "$number" -l "$number" -layout page.pdf paper.txt
    head -3 paper.txt | grep -q 'Call recording on pbx' || fail "page $number has no head"
    grep -q "page $number of $pages" paper.txt || fail "page $number has no number"
done
pdftotext -layout page.pdf paper.txt
grep -q 'Calls  *Share  *First and last  *Example' paper.txt || fail "it is not printed in the wide layout"
echo "ok      on paper: $pages pages, each with its head"

browse page.html --dump-dom >dom.html
jq -r '[.rules[] | select(.calls > 0)] + [.not_recorded] + [.rules[] | select(.calls == 0)] | .[].calls' \
    report.json >wanted
sed -nE '/<tr id="rule-/,/<\/tr>/ s/.*data-name="Calls"><data value="([0-9]+)">.*/\1/p' dom.html >shown
diff wanted shown || fail "the numbers of the page are not those of the JSON"
[ -s wanted ] || fail "there are no numbers"
echo "ok      $(wc -l <wanted) numbers as in the JSON"
for part in 'id="missing"' 'id="reconciliation"' 'id="over-time"' 'id="edits"' 'id="claims"' 'id="files"' 'Not drawn'; do
    grep -qF "$part" dom.html || fail "the page lacks $part"
done
echo "ok      all sections"
