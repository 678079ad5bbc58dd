# From the CSV report of bench_provider: a line for each number of sensors, the provider's times in nanoseconds; after
# them how steeply each grows, for the provider and for its floor.
BEGIN { FS = ","; OFS = "\t"; families = split("names freshInstances dueInstances lastInstance firstInstance", family, " ") }

$1 ~ /_median"$/ { name = $1; gsub(/"|_median/, "", name); time[name] = $4 }

END {
    printf "# sensors"
    for (f = 1; f <= families; ++f) printf "\t%s", family[f]
    printf "\n"
    for (n = 10; n <= 10000; n *= 10) {
        printf "%d", n
        for (f = 1; f <= families; ++f) printf "\t%.0f", time[family[f] "/provider/" n]
        printf "\n"
    }
    for (f = 1; f <= families; ++f) print "# slope", family[f], slope(family[f] "/provider/"), slope(family[f] "/floor/")
}

function slope(who) { return sprintf("%.2f", log(time[who 10000] / time[who 100]) / log(100)) }
