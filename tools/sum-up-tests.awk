# Of ctest's output: every line of a test that did not pass, with what it printed, and the counts at the end.
/^ *([0-9]+\/[0-9]+ )?Test +#[0-9]+:/ {
    showing = 0
    if (/ Passed +[0-9.]+ sec/) { passed++; next }
    if (/\*\*\*Skipped/) { skipped++ } else { failed++ }
    showing = 1
}
/^ +Start +[0-9]+:/ || /^[0-9]+% tests passed/ { showing = 0 }
showing { print }
END { printf "%d passed, %d failed, %d skipped\n", passed, failed, skipped }
