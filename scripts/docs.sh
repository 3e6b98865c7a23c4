#!/usr/bin/env bash
# Builds the documentation site of the public headers and of docs/ in build-docs/html, and looks at the pages
# for what a reader would stumble over. Every warning is a failure.
set -euo pipefail

cd "$(dirname "$0")/.."
scripts/install-packages.sh doxygen
rm -rf build-docs
# The headers stand as they are installed, so that the pages say how to include them.
mkdir build-docs
cp -r include build-docs
mkdir build-docs/include/callrecordingutils/platform
cp platform/{CallParams,MultiSectionFile,ThreadMutex}.h build-docs/include/callrecordingutils/platform
doxygen docs/Doxyfile
cd build-docs/html

# shows PAGE TEXT: the page has this text, as it stands in the HTML.
shows() { grep -qF -- "$2" "$1" || { echo "$1 does not show: $2" >&2 && exit 1; }; }

# Tables in comments keep their lines, and the characters of patterns stand for themselves.
shows PatternValidation_8h.html '<pre class="fragment">     pattern      any number of: symbol,'
shows PatternValidation_8h.html '     \*72                  an escaped "*"; stored as #72'
shows PatternValidation_8h.html 'they are: \*72 matches the address #72'
shows CCallRecordingAssistant_8h.html '<pre class="fragment">'
shows classCallRecordingUtils_1_1CCallRecordingAssistant.html 'user@host:port'
shows callrecordingutils_8h.html '"201@pbx:5060"'
shows callrecordingutils_8h.html '<pre class="fragment">CALLRECORDING_YES '
shows classThreadMutex.html '>callrecordingutils/platform/ThreadMutex.h</a>'
shows md_docs_pattern_language.html '<code>\*72</code>'
shows md_docs_pattern_language.html '<code>201@pbx:5060</code>'
shows md_docs_rule_file.html '<td'
# No entity, escape or mark that was meant for the tool, no table inside of a list, and no path of this
# checkout in the name of a page.
if grep -lE '&amp;(#[0-9]+|[a-z]+);|\\@|/// |`|\\ilinebr|<li>.*<pre' -- *.html | grep -v _source ||
    find . -name 'md_*' ! -name 'md_docs_*' | grep .; then
    echo "These pages show what is meant for the tool only, or are named after the checkout" >&2
    exit 1
fi
echo "build-docs/html/index.html"
