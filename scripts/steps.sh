# shellcheck shell=bash
# Sourced by the scripts beside it: the root of the project, and steps that say one line and keep
# what their command prints in build/logs.

export LC_ALL=C.UTF-8
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit
readonly logs=build/logs
mkdir -p "$logs"

# Compiling again what did not change is not worth anybody's time, where ccache stands ready.
if command -v ccache >/dev/null && [ -z "${CMAKE_CXX_COMPILER_LAUNCHER:-}" ]; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi

# fail TEXT: the one line that a failed script leaves behind.
fail() {
    echo "$(basename "$0"): $1" >&2
    exit 1
}

# run_step NAME TEXT COMMAND...: prints TEXT, runs COMMAND with its output in build/logs/NAME.log.
run_step() {
    local log="$logs/$1.log" text=$2
    shift 2
    echo "$text"
    "$@" >"$log" 2>&1 </dev/null || {
        local reason
        reason=$(grep -m 1 -E '([Ee]rror|ERROR|^E)[: ]' "$log" || tail -n 1 "$log")
        fail "failed: $text; first complaint: ${reason:-none}; log: $log"
    }
}

# configure_release [OPTION...]: LUM_WARNINGS_AS_ERRORS in the environment makes warnings stop the
# build, as CI wants it; a user's other compiler may warn about what ours do not.
configure_release() {
    run_step configure "Configuring build/release" \
        cmake --preset release -DLUM_WARNINGS_AS_ERRORS="${LUM_WARNINGS_AS_ERRORS:-OFF}" "$@"
}

# build_release TEXT [TARGET...]
build_release() {
    local text=$1
    shift
    run_step build "$text" \
        cmake --build --preset release --parallel "$(nproc)" ${1:+--target "$@"}
}
