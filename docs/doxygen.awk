# What Doxygen reads in place of a public header (docs/Doxyfile), line for line: the headers' comments as they are meant.
# A header's head is its file's text, and that of a class without one; a comment above several declarations in a row is
# each one's; and so is a comment behind several fields in a line.

# Of a document, links to others become plain words: only this one has a page.

function comment_of(line) { sub(/^ *\/\/\/<? ?/, "", line); return line }

FILENAME ~ /\.md$/ {
    while (match($0, /\[[^]]*\]\([a-z]*\.md\)/)) {
        link = substr($0, RSTART, RLENGTH)
        sub(/^\[/, "", link); sub(/\].*/, "", link)
        $0 = substr($0, 1, RSTART - 1) "docs/" link substr($0, RSTART + RLENGTH)
    }
    print
    next
}

NR == 1 && /^\/\/\/ / { head = comment_of($0); print "/// @file"; print $0; in_head = 1; next }
in_head && /^\/\/\// { head = head " " comment_of($0); print; next }
{ in_head = 0 }

/^ *\/\/\/( |$)/ {
    doc = (doc == "" || used ? "" : doc " ") comment_of($0)
    used = 0
    print
    next
}
/^ *$/ || /^ *(public|private):/ || /^ *\/\/ / { doc = ""; used = 0; print; next }

# the second and following declarations below a comment; a class that has none
{
    prefix = ""
    begins = !unfinished && !depth
    if (begins && doc != "" && used && !/\/\/\/</ && !/^ *}/) prefix = "/** " doc " */ "
    if (begins && doc == "" && /^class .*{/) prefix = "/** " head " */ "
}

# several fields in a line
/\/\/\/</ && /, / && /^ *[A-Za-z_0-9:]+ [A-Za-z_0-9]+(, [A-Za-z_0-9]+)+; / {
    note = $0; sub(/^.*\/\/\/< */, "", note)
    line = $0; sub(/;.*/, "", line); sub(/^ */, "", line)
    type = line; sub(/ .*/, "", type); sub(/^[^ ]* /, "", line)
    count = split(line, names, /, /)
    text = ""
    for (i = 1; i <= count; ++i) text = text type " " names[i] "; /**< " note " */ "
    print text
    next
}

{
    print prefix $0
    code = $0; sub(/ *\/\/.*/, "", code)
    if (!/^(class|struct|enum|namespace) / && !/^    enum /) {
        opened = gsub(/{/, "{", code); closed = gsub(/}/, "}", code)
        if (/^    /) depth += opened - closed
        if (depth < 0) depth = 0
        unfinished = code !~ /[;,}{]$/ || (code ~ /,$/ && code ~ /\(/)
        if (unfinished && code ~ /,$/) unfinished = 1
    } else {
        used = 0; doc = ""
        unfinished = 0
        next
    }
    used = 1
}
