# Compares the tests that ran with those that had to:
#   awk -v preset=… -v data=… -v ci=… -f Expected.awk expected.txt PRESET-tests.tsv
# Says in a line each what is not as it has to be: a test that did not run, that is not listed, or,
# with ci, that was skipped. data is the folder of real files, if there is one. ThreadSanitizer runs the tests whose
# names speak of threads.
BEGIN { FS = "\t" }
FNR == NR {
    if (/^#/)
        next
    of[$1] = $2
    if (($2 ~ /linux/ && preset == "windows") || ($2 ~ /windows/ && preset != "windows") || \
        ($2 ~ /plain/ && preset ~ /-[at]san$/) || ($2 ~ /data/ && data == "") || (preset ~ /-tsan$/ && $1 !~ /Thread/))
        next
    names[++count] = $1
    next
}
{
    ran[$2]
    # What failed counts already, be it a part of the tests that ended early.
    if (!($2 in of) && $1 != "failed")
        print "NOT LISTED (scripts/expected does it): " $2
    else if ($1 == "skipped" && ci != "" && !(of[$2] ~ /data/ && data == ""))
        print "SKIPPED: " $2
}
END {
    for (i = 1; i <= count; ++i)
        if (!(names[i] in ran))
            print "DID NOT RUN: " names[i]
}
