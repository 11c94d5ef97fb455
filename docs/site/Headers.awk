# What the generator reads of a public header, line for line:
#   - the manual behind `#pragma once` becomes the text of the file, which is of its room's group, and of the class that
#     the header is named after, where that has no comment of its own;
#   - a class is of its room's group;
#   - a declaration right below another one shares its comment, and so do all between `/// @{` and `/// @}`: they are
#     what the comment speaks of;
#   - copies that are deleted, or are made member by member, are said to be;
#   - an end of which there is nothing to say is left out.
# Called with the header's path, which begins with utility/.

function trimmed(text) {
    sub(/^[ \t]+/, "", text)
    sub(/[ \t]+$/, "", text)
    return text
}

# A comment's text without meaning for the generator, but for what stands between backquotes; what stands between quotes
# has none anyway. A row of columns becomes an item of a list.
function neutral(text,    i, count, pieces, outer, quotes, parts, j) {
    count = split(text, pieces, "`")
    text = ""
    for (i = 1; i <= count; i++) {
        if (i % 2 == 1) {
            parts = split(pieces[i], outer, "\"")
            pieces[i] = ""
            for (j = 1; j <= parts; j++) {
                if ((j + quotes) % 2 == 1) {
                    gsub(/[\\@&]/, "\\\\&", outer[j])
                    gsub(/</, "\\<", outer[j])
                }
                pieces[i] = pieces[i] (j > 1 ? "\"" : "") outer[j]
            }
            quotes += parts - 1
        }
        text = text (i > 1 ? "`" : "") pieces[i]
    }
    if (text ~ /^ ( )?( )?[^ ]+.*[^ ]   *[^ ]/ && text !~ /^ *- /) {
        sub(/^ */, "- ", text)
        gsub(/   */, " \\&ndash; ", text)
    }
    return text
}

# The code of a line, without comments and what stands in quotes.
function code_of(line) {
    gsub(/\\./, "", line)
    gsub(/"[^"]*"/, "\"\"", line)
    gsub(/'[^']+'/, "0", line)
    sub(/\/\/.*/, "", line)
    gsub(/\/\*[^*]*\*\//, "", line)
    return line
}

# The manual, from line 3 on: what is indented in it is code.
function take_manual(    i, text, in_code) {
    for (i = 3; lines[i] ~ /^\/\//; i++) {
        text = substr(lines[i], 4)
        if (text ~ /^    [^ ]/ && !in_code && lines[i - 1] == "//") {
            out[i - 1] = "/// @code{.cpp}"
            in_code = 1
        }
        if (in_code && text !~ /^    / && text != "") {
            # The blank line ahead of it ends the code.
            out[i - 1] = "/// @endcode"
            in_code = 0
        }
        out[i] = "/// " (in_code ? text : neutral(text))
        if (text == "")
            brief_ends = 1
        if (!brief_ends)
            brief = brief == "" ? text : brief " " text
    }
    if (in_code) {
        out[i] = "/// @endcode"
    }
    if (match(brief, /\.( |$)/))
        brief = substr(brief, 1, RSTART)
    sub(/:$/, ".", brief)
    brief = neutral(brief)
    if (i == 3)
        return
    out[1] = "/// @file"
    out[2] = room == "" ? "" : "/// @ingroup " room
}

# Whether a declaration is one of a copy or a move: what makes an object of another one, or assigns it.
function is_copy(line,    name, type) {
    if (line !~ /^([A-Za-z_]+& )?[A-Za-z_=]+\((const )?[A-Za-z_]+&&?( [a-z]+)?\)/)
        return 0
    name = line
    sub(/\(.*/, "", name)
    type = substr(line, length(name) + 2)
    sub(/^const /, "", type)
    sub(/&.*/, "", type)
    return name == type || name ~ /^[A-Za-z_]+& operator=$/
}

# A class that begins in line i, with its comment, if it has one, from line `first` on.
function is_class(i, first,    name) {
    if (out[first - 1] !~ /^[ \t]*$/ || room == "")
        return
    name = code_of(lines[i])
    sub(/[:{].*/, "", name)
    gsub(/UTILITY_API|final/, "", name)
    sub(/<.*/, "", name)
    name = trimmed(name)
    sub(/.*[ \t]/, "", name)
    out[first - 1] = "/// @ingroup " room
    if (first == i && name ~ ("^C?[A-Z]*" file "$"))
        out[first - 1] = "/** @ingroup " room " */ /** @brief " brief " */ /** @copydetails " path " */"
}

{ lines[NR] = $0; out[NR] = $0 }

END {
    path = FILENAME
    sub(/^.*\/utility\//, "utility/", path)
    parts = split(path, part, "/")
    room = parts > 2 ? part[2] : ""
    file = part[parts]
    sub(/\.h$/, "", file)
    take_manual()

    # The depth of braces is `depth`; scopes[depth] says of what the innermost one is: a scope with declarations, or a
    # body.
    depth = 0
    scopes[0] = "scope"
    shared = ""
    comment = ""
    first_comment = 0
    declaration = ""
    for (i = 1; i <= NR; i++) {
        line = trimmed(lines[i])
        if (i >= 3 && out[i] != lines[i])
            continue # the manual
        if (scopes[depth] != "body" && declaration == "") {
            if (line ~ /^\/\/\/( |$)/ && line !~ /^\/\/\/</) {
                # Between these two marks blank lines do not end it.
                if (line ~ /^\/\/\/ @[{}]$/) {
                    family = line ~ /\{/
                    out[i] = ""
                    shared = ""
                    continue
                }
                if (comment == "")
                    first_comment = i
                text = neutral(substr(line, 5))
                match(lines[i], /^[ \t]*/)
                out[i] = substr(lines[i], 1, RLENGTH) "/// " text
                comment = comment (comment == "" ? "" : " ") (text == "" ? "<p>" : text)
                shared = ""
                continue
            }
            if (line == "" || line ~ /^\/\// || line ~ /^#/ || line ~ /^(public|protected|private):/ || line ~ /^\}/ || line == "{") {
                if (!family || line != "")
                    shared = ""
                if (line ~ /^#/ && line !~ /^#define/)
                    comment = ""
                if (line ~ /^#define/ && lines[i] !~ /\\$/)
                    comment = ""
            } else {
                # A declaration begins.
                begins = i
                text = ""
                if (comment == "" && is_copy(line) && !shares_copies)
                    shared = ""
                if (comment != "") {
                    shared = comment
                    shares_copies = is_copy(line)
                } else if (line ~ /^static_assert/)
                    ;
                else if (line ~ /\) *= *delete;/)
                    text = "/** There is none: objects are not copied. */ "
                else if (line ~ /^(virtual )?~/)
                    out[i] = shared = ""
                else if (shared != "" && line !~ /\/\/\/</)
                    text = "/** " shared " */ "
                else if (line ~ /\((const )?[A-Za-z_]+&&?\)( noexcept)? *= *default;/)
                    text = "/** Member by member. */ "
                if (text != "") {
                    match(lines[i], /^[ \t]*/)
                    out[i] = substr(lines[i], 1, RLENGTH) text substr(lines[i], RLENGTH + 1)
                }
                own_comment = comment != "" ? first_comment : i
                comment = ""
            }
        }
        code = code_of(lines[i])
        if (line ~ /^#/)
            continue
        if (scopes[depth] != "body" && code !~ /^[ \t]*$/ && code !~ /^[ \t]*(public|protected|private):[ \t]*$/)
            declaration = declaration " " trimmed(code)
        for (j = 1; j <= length(code); j++) {
            character = substr(code, j, 1)
            if (character == "(")
                parentheses++
            else if (character == ")")
                parentheses--
            else if (character == "{") {
                kind = "body"
                head = declaration
                while (sub(/template *<[^<>]*(<[^<>]*>[^<>]*)*>/, "", head))
                    ;
                if (scopes[depth] != "body" && (head ~ /(^|[ \t])(namespace|enum)([ \t]|$)/ || (head !~ /\(/ && head ~ /(^|[ \t])(class|struct|union)([ \t]|$)/) || head ~ /extern ""/))
                    kind = head ~ /(^|[ \t])enum([ \t]|$)/ ? "enum" : "scope"
                if (kind != "body" && scopes[depth] == "scope") {
                    if (head ~ /(^|[ \t])(class|struct)([ \t])/ && head !~ /enum/)
                        is_class(begins, own_comment)
                    declaration = ""
                    shared = ""
                }
                scopes[++depth] = kind
                if (kind != "body")
                    declaration = ""
            } else if (character == "}") {
                if (scopes[depth] != "body") {
                    declaration = ""
                    shared = ""
                } else if (scopes[depth - 1] != "body")
                    declaration = declaration "}"
                depth--
            }
        }
        if (scopes[depth] != "body" && parentheses == 0 && (declaration ~ /[;}]$/ || (scopes[depth] == "enum" && declaration ~ /,$/)))
            declaration = ""
    }
    for (i = 1; i <= NR; i++)
        print out[i]
}
