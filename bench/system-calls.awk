# Compares the calls between the marks of a trace of bench_paths with the table of those that each path needs.
BEGIN { FS = "\t" }

FNR == NR {
    if (/^#/ || NF == 0) next
    key = $1 "\t" $2
    order[++rows] = key
    expected[key] = $3
    why[key] = $4
    next
}

/^write\(-1, "begin / { split($0, words, " "); path = words[3]; times = words[4] + 0; paths[path]; next }
/^write\(-1, "end"/ { path = ""; next }
path == "" { next }
# More or less memory for the process is malloc's matter.
/^(brk|mmap|munmap|mremap|madvise)\(/ { next }
{
    call = $0
    sub(/\(.*/, "", call)
    found[path "\t" call] += 1 / times
}

END {
    printf "%-20s %-12s %8s %8s  %s\n", "path", "call", "needed", "made", "for"
    for (i = 1; i <= rows; ++i) {
        key = order[i]
        split(key, parts, "\t")
        made = parts[2] == "-" ? 0 : found[key]
        # A mean over the repetitions, so compared with some room for what is made less than once each.
        differs = made - expected[key] > 0.05 || expected[key] - made > 0.05 || !(parts[1] in paths)
        printf "%-20s %-12s %8d %8.1f  %s%s\n", parts[1], parts[2], expected[key], made, why[key], differs ? "  DIFFERS" : ""
        if (differs) failed = 1
        listed[key]
    }
    for (key in found) {
        if (key in listed) continue
        printf "%s made %.1f times, but not needed\n", key, found[key]
        failed = 1
    }
    exit failed
}
