#!/usr/bin/env bash
# Makes pages of the public headers and of docs/ in build-docs/html, and checks them for what a reader would stumble
# over. Every warning is a failure.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-packages.sh doxygen
rm -rf build-docs
# The headers are placed as they are installed, so that the pages show how to include them.
mkdir build-docs
cp -r include build-docs
mkdir build-docs/include/callrecordingutils/platform
cp platform/{CallParams,MultiSectionFile,ThreadMutex}.h build-docs/include/callrecordingutils/platform
doxygen docs/Doxyfile
cd build-docs/html

# shows PAGE TEXT: the HTML of the page contains this text.
shows() { grep -qF -- "$2" "$1" || { echo "$1 does not show: $2" >&2 && exit 1; }; }

# Tables in comments keep their lines, and characters of patterns are shown as they are.
shows PatternValidation_8h.html '<pre class="fragment">     pattern      any number of: symbol,'
shows PatternValidation_8h.html '     \*72                  an escaped "*"; stored as #72'
shows PatternValidation_8h.html 'they are: \*72 matches the address #72'
shows CCallRecordingAssistant_8h.html '<pre class="fragment">'
shows classCallRecordingUtils_1_1CCallRecordingAssistant.html 'user@host:port'
shows callrecordingutils_8h.html 'sip:201@pbx:5060'
shows md_docs_calls.html '<code>213@evil.example</code>'
shows callrecordingutils_8h.html '<pre class="fragment">CALLRECORDING_YES '
shows classThreadMutex.html '>callrecordingutils/platform/ThreadMutex.h</a>'
shows md_docs_pattern_language.html '<code>\*72</code>'
shows md_docs_pattern_language.html '<code>201@pbx:5060</code>'
shows md_docs_rule_file.html '<td'
# No page shows an entity, an escape or a mark of the tool's own language, or has a table inside a list; and no page is
# named after the path of this checkout.
if grep -lE '&amp;(#[0-9]+|[a-z]+);|\\@|/// |`|\\ilinebr|<li>.*<pre' -- *.html | grep -v _source ||
    find . -name 'md_*' ! -name 'md_docs_*' | grep .; then
    echo "These pages show marks of the tool's own language, or are named after the path of the checkout" >&2
    exit 1
fi
echo "build-docs/html/index.html"
