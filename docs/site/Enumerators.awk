# Says which public enumerators have no text, of which the generator says nothing, and then ends with 1:
#   awk -f Enumerators.awk HEADER...
FNR == 1 { inEnum = isDetail = 0 }
/^namespace utility::detail$/ { isDetail = 1 }
/^}$/ { isDetail = 0 }
/^ *enum [^;]*$/ { inEnum = !isDetail }
/}/ { inEnum = 0 }
inEnum && /^ *[A-Za-z_0-9]+( =.*)?,? *(\/\/.*)?$/ && !/\/\/\/</ && !isText {
    print FILENAME ":" FNR ": error: an enumerator is not documented:" $0
    bad = 1
}
{ isText = /^ *\/\/\// }
END { exit bad }
