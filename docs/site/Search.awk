# The words of the site, for its search: a line for each page and each named place in it, with its title, the title of
# the page, and its text.

function plain(text) {
    gsub(/<[^>]*>/, "", text)
    gsub(/&#160;|&nbsp;/, " ", text)
    gsub(/&lt;/, "<", text)
    gsub(/&gt;/, ">", text)
    gsub(/&quot;/, "\"", text)
    gsub(/&#39;/, "'", text)
    gsub(/&amp;/, "\\&", text)
    gsub(/[ \t]+/, " ", text)
    sub(/^ /, "", text)
    sub(/ $/, "", text)
    return text
}

function quoted(text) {
    gsub(/[\\"]/, "\\\\&", text)
    return "\"" text "\""
}

function flush() {
    if (title != "")
        print "[" quoted(url) "," quoted(title) "," quoted(page) "," quoted(plain(text)) "],"
    title = ""
    text = ""
}

function begin(anchor, name) {
    flush()
    url = file "#" anchor
    title = name
}

BEGIN { print "searchIndex = [" }

FNR == 1 {
    flush()
    file = FILENAME
    sub(/.*\//, "", file)
    inside = 0
    unwanted = file ~ /^(source_|annotated)/
}
unwanted { next }
/<div class="title">/ {
    page = $0
    sub(/.*<div class="title">/, "", page)
    sub(/<(div class="ingroups"|span class="mlabels").*/, "", page)
    page = plain(page)
    sub(/ (Class|Struct|Union|File|Namespace)( Template)? Reference$/, "", page)
    title = page
    url = file
}
/<div class="contents">/ { inside = 1 }
/^<\/main>/ { inside = 0 }
!inside { next }
/<div class="ttc"/ { next }
# A member that has its text below is listed here alone, and is no place of its own.
/<tr class="memitem:/ { listed = !/<a id="/ }
# Nor is one of a base.
/<tr class="memitem:[^"]* inherit/ {
    listed = 1
    next
}
/class="groupheader"|^[A-Za-z ]*<\/h2><\/td><\/tr>/ { next }
/<tr class="separator:/ {
    listed = 0
    next
}
/<tr class="memitem:.*<a id="/ {
    match($0, /<a id="[^"]*/)
    anchor = substr($0, RSTART + 7, RLENGTH - 7)
    wants_name = 1
    next
}
wants_name && match($0, /<b>[^<]*<\/b>/) {
    begin(anchor, plain(substr($0, RSTART, RLENGTH)))
    wants_name = 0
}
listed { next }
/^<a id="[^"]*" name="[^"]*"><\/a>$/ {
    match($0, /<a id="[^"]*/)
    anchor = substr($0, RSTART + 7, RLENGTH - 7)
    next
}
/<h2 class="memtitle">/ {
    name = $0
    sub(/<span class="permalink">.*<\/a><\/span>/, "", name)
    name = plain(name)
    sub(/\(\)( <small>.*)?$/, "", name)
    sub(/\(\).*$/, "", name)
    begin(anchor, name)
    next
}
/<h[1-4]><a class="anchor" id="/ {
    match($0, /id="[^"]*/)
    anchor = substr($0, RSTART + 4, RLENGTH - 4)
    getline
    begin(anchor, plain($0))
    next
}
{ text = text " " $0 }

END {
    flush()
    print "];"
}
