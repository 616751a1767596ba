# Sourced by .ci/run and .ci/nightly: runs a step under a heading and keeps its wall time.

# A compiler cache, where there is one, makes the second run on a machine short; CCACHE_DISABLE=1 measures without it.
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi
# What a platform without a screen warns of would bury the line that failed.
export QT_LOGGING_RULES=default.warning=false

step_times=()

step() { # title command...
    local title=$1 begin=$SECONDS
    shift
    printf '\n== %s\n' "$title"
    "$@"
    step_times+=("$(printf '%4d s  %s' $((SECONDS - begin)) "$title")")
}

# A step that only begins in the first OSTREL_CI_MINUTES (50) of a run: on a slow machine it is left to .ci/nightly.
step_in_time() { # title command...
    if [ "$SECONDS" -lt $((${OSTREL_CI_MINUTES:-50} * 60)) ]; then
        step "$@"
    else
        printf '\n== %s: left to .ci/nightly, %d minutes are gone\n' "$1" $((SECONDS / 60))
        step_times+=("not run  $1")
    fi
}

tests_with() { # preset
    build "$1"
    ctest --preset "$1"
}

steps_done() {
    printf '\n== wall time\n'
    printf '%s\n' "${step_times[@]}"
    printf '%4d s  in all\n' "$SECONDS"
}
