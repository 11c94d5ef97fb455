# A written page as the generator reads it, line for line: its headings get the names that links to them have, and links
# lead to where their targets are in the site. With Paths.awk, -v pages='README.md docs/Settings.md ...',
# -v headers='utility/Utility.h ...' and -v sources=FILE, to which the other files that are linked to are added.

# What stands in the round brackets of a link, for the site.
function link_of(target,    anchor, file) {
    if (target ~ /^[a-z]+:/)
        return target
    if (match(target, /#.*/)) {
        anchor = substr(target, RSTART + 1)
        target = substr(target, 1, RSTART - 1)
    }
    file = resolved(FILENAME, target)
    if (index(" " pages " ", " " file " "))
        return page_of(file) ".html" (anchor == "" ? "" : "#" page_of(file) "-" anchor)
    if (index(" " headers " ", " " file " "))
        return "@ref " file
    if (file ~ /\.(png|svg)$/) {
        sub(/.*\//, "", file)
        return file
    }
    print file >>sources
    gsub(/[\/. ]/, "_", file)
    return "source_" file ".html"
}

# Between backquotes a quote would end the code, and a % goes; a name is linked to its text in the reference between
# tags only. The text of a link into the reference is taken as it stands.
function spans_of(line,    count, pieces, i) {
    if (line ~ /^ *$/)
        in_span = 0
    count = split(line, pieces, "`")
    line = pieces[1]
    for (i = 2; i <= count; i++) {
        if (!in_span && i < count && pieces[i + 1] ~ /^\]\(@ref /) {
            line = line pieces[i] pieces[i + 1]
            i++
        } else if (!in_span && i < count && pieces[i] ~ /^[A-Za-z_][A-Za-z_0-9:~]*(\(\))?$/) {
            line = line "<code>" pieces[i] "</code>" pieces[i + 1]
            i++
        } else {
            in_span = !in_span
            if (in_span)
                gsub(/%/, "%%", pieces[i])
            line = line "``" pieces[i]
        }
    }
    return line
}

FNR == 1 && /^# / { print $0 " {#" (page_of(FILENAME) == "index" ? "mainpage" : page_of(FILENAME)) "}"; next }

/^ *```/ {
    fenced = !fenced
    print
    next
}

!fenced && /^##+ / {
    print $0 " {#" page_of(FILENAME) "-" slug_of($0) "}"
    next
}

!fenced && !/^    / {
    line = ""
    rest = $0
    while (match(rest, /\]\([^() ]+\)/)) {
        link = substr(rest, RSTART + 2, RLENGTH - 3)
        line = line substr(rest, 1, RSTART + 1)
        rest = substr(rest, RSTART + RLENGTH)
        line = line link_of(link) ")"
    }
    print spans_of(line rest)
    next
}

{ print }
