# Tells the links of the site that lead to no file, or to no place in one, and fails. -v root=build/docs/html/, and all
# of its pages.

function collect(line, attribute,    rest) {
    rest = line
    while (match(rest, attribute "=\"[^\"]*\"")) {
        found[++count_found] = substr(rest, RSTART + length(attribute) + 2, RLENGTH - length(attribute) - 3)
        rest = substr(rest, RSTART + RLENGTH)
    }
}

FNR == 1 {
    page = FILENAME
    sub(/.*\//, "", page)
    pages[page]
}
/ id="/ {
    count_found = 0
    collect($0, " id")
    for (i = 1; i <= count_found; i++)
        places[page "#" found[i]]
}
/ (href|src)="/ {
    count_found = 0
    collect($0, " href")
    collect($0, " src")
    for (i = 1; i <= count_found; i++)
        if (found[i] !~ /^[a-z]+:/)
            links[page " " found[i]]
}
END {
    for (link in links) {
        count++
        split(link, part, " ")
        file = part[2]
        anchor = sub(/#.*/, "", file) ? substr(part[2], length(file) + 1) : ""
        if (file == "")
            file = part[1]
        if (!(file in pages) && system("test -e '" root file "'") != 0 || (anchor != "" && !((file anchor) in places))) {
            print part[1] ": nothing is at " part[2]
            bad = 1
        }
    }
    if (count == 0)
        print "no links were read"
    exit bad || count == 0
}
