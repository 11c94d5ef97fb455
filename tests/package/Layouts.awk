# Compares the layouts of classes in two descriptions by abidw, that of a release and that of now:
#   awk -f Layouts.awk RELEASED NOW
# It says which classes are in both and not the same, and then ends with 1; another name of a field counts as well.
# abidiff goes from functions to the types of their parameters, and does not come to the lines of a record, for one,
# which inline functions read in the nodes of a list.
function attribute(key) {
    return match($0, " " key "='[^']*'") ? substr($0, RSTART + length(key) + 3, RLENGTH - length(key) - 4) : ""
}
{ depth = match($0, /</) }
# Those of other libraries are as their users have them.
/<namespace-decl name='(std|boost|__gnu_cxx)'/ && !others { others = depth }
/<\/namespace-decl>/ && depth == others { others = 0 }
others { next }
/<abi-instr / { path[depth] = "" }
/<member-type / { path[depth] = path[depth - 2] }
/<(namespace|class|union)-decl / {
    name = path[depth] = (path[depth - 2] == "" ? "" : path[depth - 2] "::") attribute("name")
    if ((size = attribute("size-in-bits")) != "") {
        layout[FILENAME, name] = size " bits"
        names[name]
    }
}
# A union without a name, which stands ahead of the field that it is the type of, is what it holds.
/<union-decl .* is-anonymous='yes'/ { union = attribute("id") }
/<data-member / && !/layout-offset-in-bits=/ && path[depth - 2] ~ /__anonymous_union__/ {
    getline
    held[FILENAME, union] = held[FILENAME, union] attribute("name")
}
/<(data-member|base-class) .*layout-offset-in-bits=/ {
    class = path[depth - 2]
    offset = attribute("layout-offset-in-bits")
    if (/<data-member /)
        getline
    name = attribute("name")
    if (name == "")
        name = held[FILENAME, attribute("type-id")]
    layout[FILENAME, class] = layout[FILENAME, class] ", " name " at " offset
}
END {
    for (name in names)
        if ((ARGV[1], name) in layout && (ARGV[2], name) in layout && layout[ARGV[1], name] != layout[ARGV[2], name]) {
            print name "\n  was " layout[ARGV[1], name] "\n  is  " layout[ARGV[2], name]
            bad = 1
        }
    exit bad
}
