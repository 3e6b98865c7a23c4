# What Doxygen reads in the place of a header, line for line, so that comments can be written as people read
# them: indented tables become verbatim text, and in user@host and \*72 the "@" and "\" stand for themselves.

# Puts a backslash before the second character of everything in line that expression describes.
function escape(line, expression) {
    while (match(line, expression))
        line = substr(line, 1, RSTART) "\\" substr(line, RSTART + 1)
    return line
}

function isComment(line) { return line ~ /^\/\/\// }
function isTable(line) { return line ~ /^\/\/\/     / }
function isBlank(line) { return line ~ /^\/\/\/$/ }

# A comment of lines from first to last becomes one between /** and */, whose tables are verbatim.
function printComment(first, last,    i, line, inTable) {
    for (i = first; i <= last; ++i) {
        line = substr(lines[i], 4)
        if (!inTable && isBlank(lines[i]) && isTable(lines[i + 1])) {
            line = "@verbatim"
            inTable = 1
        } else if (inTable && isBlank(lines[i]) && !isTable(lines[i + 1])) {
            line = "@endverbatim"
            inTable = 0
        } else if (!inTable)
            line = escape(escape(line, "[a-z0-9]@[a-z]"), " \\\\[*?,!-]")
        print (i == first ? "/**" : "") line (i == last ? " */" : "")
    }
}

{ lines[NR] = $0 }

END {
    for (i = 1; i <= NR; ++i) {
        if (isComment(lines[i])) {
            first = i
            while (isComment(lines[i + 1]))
                ++i
            printComment(first, i)
        } else if (lines[i] ~ /namespace CallRecordingPlatform( {)?$/)
            print "" # Nobody writes it.
        else if (lines[i] ~ /^ *\*     /)
            print lines[i]
        else
            print escape(escape(lines[i], "[a-z0-9]@[a-z]"), " \\\\[*?,!-]")
    }
}
