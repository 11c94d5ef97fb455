# The example in a header's head comment: lines that are indented by five blanks, the first of them behind an empty one.
/^\/\/     / {
    if (last == "//")
        inside = 1
    if (inside)
        print substr($0, 8)
}
!/^\/\/     / { inside = 0 }
{ last = $0 }
