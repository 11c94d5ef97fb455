# What is known of links in written pages, for Pages.awk and PageLinks.awk.

# The name that a heading has on the usual hosts of repositories.
function slug_of(heading) {
    sub(/^#+ */, "", heading)
    heading = tolower(heading)
    gsub(/[^a-z0-9 _-]/, "", heading)
    gsub(/ /, "-", heading)
    return heading
}

# The path in the repository of what a link names in a page; of the page itself, if the link names none.
function resolved(page, target,    folder) {
    if (target == "")
        return page
    folder = page
    if (!sub(/\/[^\/]*$/, "/", folder))
        folder = ""
    target = folder target
    gsub(/\/\.\//, "/", target)
    while (sub(/[^\/]+\/\.\.\//, "", target))
        ;
    return target
}
