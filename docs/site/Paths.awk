# What is known of written pages and their links, for Pages.awk, PageLinks.awk and Contents.awk.

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

# The page that a written page becomes: docs/Settings.md is Settings, bench/RESULTS.md is bench_RESULTS.
function page_of(path) {
    sub(/^docs\//, "", path)
    sub(/\.md$/, "", path)
    gsub(/[\/. ]/, "_", path)
    return path == "README" ? "index" : path
}
