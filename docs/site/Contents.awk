# What is at the side of every page of the site: the written pages, and the rooms. With Paths.awk, docs/Contents and
# docs/Rooms.dox.

function head(text) {
    printf "%s<h2>%s</h2>\n<ul>\n", open, text
    open = "</ul>\n"
}

function entry(page, text) { printf "<li><a href=\"%s.html\">%s</a></li>\n", page, text }

FNR == NR && /^[^ ]/ { head($0) }
FNR == NR && /^ / {
    getline title <$1
    sub(/^# */, "", title)
    gsub(/`/, "", title)
    entry(page_of($1), title)
}
FNR != NR && FNR == 1 {
    head("Reference")
    entry("annotated", "Classes")
    entry("modules", "Rooms")
    head("Rooms")
}
$1 == "@defgroup" { entry("group__" $2, $3) }
END { print "</ul>" }
