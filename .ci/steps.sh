# Sourced by .ci/run and .ci/nightly: runs a step under a heading and keeps its wall time.

step_times=()

step() { # title command...
    local title=$1 begin=$SECONDS
    shift
    printf '\n== %s\n' "$title"
    "$@"
    step_times+=("$(printf '%4d s  %s' $((SECONDS - begin)) "$title")")
}

steps_done() {
    printf '\n== wall time\n'
    printf '%s\n' "${step_times[@]}"
    printf '%4d s  in all\n' "$SECONDS"
}
