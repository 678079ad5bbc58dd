# From one of callgrind's dumps of bench_paths, for each function the path, the function, and its instructions in one
# run of that path. What a measured function calls elsewhere counts whole, under the name of what it called.
#
# Counted are those of the measured code (the shared library; for the log and the drives, which are linked in, the
# program itself), and of whatever that calls in other libraries, but not the broker's (which is in the program) nor the
# chip's.
# Names are written out once, with a number by which they go from then on.
function named(text,    id, kind) {
    kind = text ~ /ob=/ ? "object" : "function"
    sub(/^[a-z]+=/, "", text)
    match(text, /^\([0-9]+\)/)
    id = kind substr(text, 1, RLENGTH)
    if (length(text) > RLENGTH) names[id] = substr(text, RLENGTH + 2)
    return names[id]
}

/^desc: Trigger: Client Request: / {
    path = $5
    isLinkedIn = path ~ /^(log|drive)-/
}
/^ob=/ { object = named($0) }
/^fn=/ { caller = named($0) }
/^cfn=/ { callee = named($0) }
/^cob=/ { called = named($0) }
/^calls=/ { isCall = 1; next }
/^[-+*0-9]/ {
    isMeasured = object ~ (isLinkedIn ? "/bench_paths$" : "/libzelsensors") && caller != "(below main)"
    isOutside = called != "" && called !~ /\/(bench_paths|libzelsensors[^\/]*|libzelchip[^\/]*)$/
    if (isMeasured && (!isCall || isOutside)) counts[isCall ? callee : caller] += $2
    isCall = 0
    called = ""
}
# The first line happens but once, and costs what the state of the heap then makes it cost.
END {
    if (path == "" || path == "log-first-line") exit
    for (name in counts) printf "%s\t%s\t%.1f\n", path, name, counts[name] / 10
}
