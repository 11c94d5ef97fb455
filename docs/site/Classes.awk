# The generator's tree of classes as one list: the library's, those in namespaces by their full names, and last the
# records that are the system's on Windows.

/^<tr id="row_/ {
    match($0, /width:[0-9]+/)
    level = substr($0, RSTART + 6, RLENGTH - 6) / 16
    # What can be opened has an indentation less.
    if (!/class="arrow"/)
        level--
    name = $0
    sub(/<td class="desc">.*/, "", name)
    sub(/.*<span class="icon">.<\/span><\/span>/, "", name)
    is_namespace[level] = name ~ /^<b>/
    match(name, />[^<]*</)
    names[level] = substr(name, RSTART + 1, RLENGTH - 2)
    if (is_namespace[level])
        next
    prefix = ""
    for (i = 0; i < level; i++)
        prefix = prefix names[i] "::"
    row = substr(name, 1, RSTART) prefix substr(name, RSTART + 1)
    text = $0
    sub(/.*<td class="desc">/, "<td class=\"desc\">", text)
    kind = names[level] ~ /^(_|tag|FILETIME)/ ? 2 : level > 0 && is_namespace[0]
    rows[kind] = rows[kind] "<tr><td class=\"entry\">" row text "\n"
    next
}
/<div class="levels">/ { sub(/<div class="levels">.*<\/div>/, "") }
/^<\/table>/ { printf "%s%s%s", rows[0], rows[1], rows[2] }
{ print }
