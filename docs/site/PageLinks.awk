# Tells the links of written pages that lead to no file, or to no heading of one, and fails. Called in the repository's
# folder, with Paths.awk and all pages.

FNR == 1 { fenced = 0 }
/^ *```/ { fenced = !fenced }
fenced { next }
/^#+ / { headings[FILENAME "#" slug_of($0)] }
{
    gsub(/`[^`]*`/, "")
    while (match($0, /\]\([^() ]+\)/)) {
        links[++count] = substr($0, RSTART + 2, RLENGTH - 3)
        pages[count] = FILENAME
        places[count] = FILENAME ":" FNR
        $0 = substr($0, RSTART + RLENGTH)
    }
}
END {
    for (i = 1; i <= count; i++) {
        if (links[i] ~ /^[a-z]+:/)
            continue
        path = links[i]
        anchor = sub(/#.*/, "", path) ? substr(links[i], length(path) + 1) : ""
        path = resolved(pages[i], path)
        if (system("test -e '" path "'") != 0 || (anchor != "" && !((path anchor) in headings))) {
            print places[i] ": nothing is at " links[i]
            bad = 1
        }
    }
    if (count == 0)
        print "no links were read"
    exit bad || count == 0
}
