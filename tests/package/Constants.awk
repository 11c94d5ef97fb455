# Lists the constants and enumerators of headers with their values, as these are written:
#   awk -f Constants.awk HEADER... | sort -u
# A program has them compiled into itself, and abidiff sees those enumerators alone that a function's parameters lead to.
FNR == 1 { text = enum = "" }
{ sub(/[ \t]*\/\/.*/, "") }
enum == "" && text == "" && /^ *(inline|static) constexpr / { text = " " }
text != "" {
    text = text $0
    if (/;$/) {
        gsub(/[ \t]+/, " ", text)
        # Neither a function nor what one makes.
        if (match(text, / [A-Za-z_0-9]+(\[[^]]*\])* = /) && !index(substr(text, 1, RSTART), "(") && !index(text, "= []"))
            print substr(text, RSTART + 1)
        text = ""
    }
    next
}
/^ *enum [^;]*$/ {
    enum = $0
    gsub(/^ *enum (class )?| *:.*| *\{.*/, "", enum)
    value = further = 0
    next
}
enum != "" && /}/ { enum = "" }
enum != "" && match($0, /[A-Za-z_0-9]+/) {
    gsub(/^[ \t{]+|,? *$/, "")
    name = substr($0, 1, match($0 " ", /[^A-Za-z_0-9]/) - 1)
    if (index($0, "=")) {
        value = substr($0, index($0, "=") + 2)
        print enum "::" name " = " value
    } else
        print enum "::" name " = " value (further ? " + " further : "")
    further = index($0, "=") ? 1 : further + 1
}
