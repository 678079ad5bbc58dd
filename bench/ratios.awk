# Prints the table of ratios from the CSV reports of the benchmarks.
BEGIN { FS = "," }

function unquoted(text) {
    gsub(/"/, "", text)
    return text
}

$1 ~ /_median"$/ { name = unquoted($1); sub(/_median$/, "", name); time[name] = $4 }
$1 ~ /_stddev"$/ { name = unquoted($1); sub(/_stddev$/, "", name); deviation[name] = $4 }

function heading() {
    printf "%-34s %12s %12s %7s %7s  %s\n", "", "ns", "against ns", "ratio", "spread", "goal"
}

# goal: the highest ratio, or with "ns" the longest time, or nothing.
function row(title, measured, against, goal,    ratio, verdict) {
    if (!(measured in time) || !(against in time)) {
        printf "%-34s missing in the reports\n", title
        failed = 1
        return
    }
    ratio = time[measured] / time[against]
    verdict = ""
    if (goal ~ /ns$/) verdict = "under " goal ": " (time[measured] < goal + 0 ? "met" : "MISSED")
    else if (goal != "") verdict = "at most " goal ": " (ratio <= goal + 0 ? "met" : "MISSED")
    printf "%-34s %12.1f %12.1f %7.2f %6.1f%%  %s\n", title, time[measured], time[against], ratio, 100 * deviation[measured] / time[measured], verdict
}

function family(name, largest, goal,    n) {
    for (n = 10; n <= largest; n *= 10) row(name ", " n, name "/provider/" n, name "/floor/" n, goal)
}

END {
    heading()
    family("names", 10000, "")
    family("freshInstances", 10000, "1.15")
    family("dueInstances", 10000, "1.15")
    family("firstInstance", 10000, "")
    family("lastInstance", 10000, "")
    family("dueInstance", 10000, "")
    family("startUp", 1000, "")
    for (n = 10; n <= 1000; n *= 10) {
        sensors = n == 10 ? 14 : n
        row("metrics / requests, " sensors, "metricsRound/" sensors, "metricsRequests/" sensors, "1.30")
    }
    row("driveScan, 10", "driveScan/provider/10", "driveScan/floor/10", "")
    split("14 100 1000", sizes, " ")
    for (i = 1; i <= 3; ++i)
        row("round / its requests, " sizes[i], "round/model/" sizes[i], "round/requests/" sizes[i], "1.3")
    for (i = 1; i <= 3; ++i)
        row("recorded round / round, " sizes[i], "round/recording/" sizes[i], "round/model/" sizes[i], "")
    row("loading an hour / floor", "recordingLoad/scenario", "recordingLoad/floor", "50000000 ns")
    row("filtered Log / virtual call", "filteredCall/Log", "filteredCall/virtual", "5 ns")
    row("filtered LogQuick / virtual call", "filteredCall/LogQuick", "filteredCall/virtual", "5 ns")
    row("line's format / spdlog's", "lineFormat/LogRecord", "lineFormat/spdlog", "")
    for (n = 1; n <= 8; n *= 2) {
        t = "/threads:" n
        row("written line / floor, " n " threads", "writtenLine/Log" t, "writtenLine/floor" t, "")
        row("written line / spdlog, " n " threads", "writtenLine/Log" t, "writtenLine/spdlog" t, "1.00")
        row("written line / spdlog*, " n " threads", "writtenLine/Log" t, "writtenLine/spdlogWithFstat" t, "1.00")
    }
    row("written LogQuick / floor", "writtenLine/LogQuick/threads:1", "writtenLine/floor/threads:1", "")
    row("ReadSensor / sensors_get_value", "linuxRead/ReadSensor", "linuxRead/sensors_get_value", "1.20")
    row("start, 50 sensors / sensors_init", "linuxStartUp/Initialise", "linuxStartUp/sensors_init", "")
    print "* after the same fstat and line on standard output, which the provider's log owes for each line"
    printf "one compared sensor: %.0f ns, of the floor %.0f ns\n",
        (time["lastInstance/provider/1000"] - time["firstInstance/provider/1000"]) / 999,
        (time["lastInstance/floor/1000"] - time["firstInstance/floor/1000"]) / 999
    exit failed
}
