# shellcheck shell=bash
# How the set-up shows what it does: one line for each step with the time it took, and below them, while steps run, how far
# they are. Sourced by common.sh, never run. All of it goes to standard error.

# The folder with a file for each running step; made by the script that the user started.
ORVANE_STEPS=${ORVANE_STEPS:-}

say() {
    [[ ! -t 2 ]] || printf '\r\033[K' >&2
    printf '%s\n' "$*" >&2
}

fail() {
    say "error: $1"
    exit 1
}

duration() {
    local seconds=$1
    if ((seconds < 60)); then
        printf '%d s' "$seconds"
    else
        printf '%d min %02d s' $((seconds / 60)) $((seconds % 60))
    fi
}

# figure LOG FOLDER: how far a step is, from what it has written: ninja's [n/m], packages, or megabytes in its folder.
figure() {
    local count
    count=$(awk '
        /^\[[0-9]+\/[0-9]+\]/ { shown = $1 }
        / newly installed/ { total = 3 * $3; done = 0 }
        /^(Get:|Unpacking |Setting up )/ { done++ }
        END {
            if (shown) print shown
            else if (total) printf "%d %%\n", 100 * (done > total ? total : done) / total
        }' "$1" 2>/dev/null)
    if [[ -z $count && -n $2 ]]; then
        count="$(du --summarize --block-size=1MB "$2" 2>/dev/null | cut --fields=1) MB"
    fi
    printf '%s' "$count"
}

# The running steps in one line; those of the first ten seconds are not worth a figure.
running_steps() {
    local file title started log folder line=""
    for file in "$ORVANE_STEPS"/*; do
        { read -r title && read -r started && read -r log && read -r folder; } 2>/dev/null <"$file" || continue
        line+="${line:+ · }${title%% (*}"
        ((EPOCHSECONDS - started < 10)) || line+=" $(figure "$log" "$folder")"
    done
    printf '%s' "$line"
}

# A terminal's last line is rewritten; a log gets a line twice a minute.
show_running_steps() {
    local line="" before
    if [[ -t 2 ]]; then
        while sleep 1; do
            before=$line
            line=$(running_steps)
            [[ -z $line$before ]] || printf '\r\033[K%s' "${line:0:$(tput cols 2>/dev/null || echo 80)-1}" >&2
        done
    else
        while sleep 30; do
            line=$(running_steps)
            [[ -z $line ]] || printf '  … %s\n' "$line" >&2
        done
    fi
}

# Called once by the script that the user started. Its end removes what is here and ends what runs in the background.
begin_steps() {
    ORVANE_STEPS=$(mktemp --directory "${TMPDIR:-/tmp}/orvane-steps.XXXXXX")
    export ORVANE_STEPS
    trap end_steps EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
    trap 'exit 1' USR1 # from a job that failed and has said why
    in_background show_running_steps
}

# A process group of its own, which can be ended with all that it started.
in_background() {
    set -m
    "$@" </dev/null >/dev/null &
    set +m
    background+=($!)
}
background=()

end_steps() {
    local job
    trap - EXIT USR1
    for job in "${background[@]}"; do
        kill -TERM -- "-$job" || true
    done 2>/dev/null
    wait 2>/dev/null || true
    background=()
    [[ ! -t 2 ]] || printf '\r\033[K' >&2
    rm -rf "$ORVANE_STEPS"
    unset ORVANE_STEPS
}

# beside SCRIPT [ARG…]: starts the script in the background. When it fails, the whole set-up ends.
beside() {
    in_background or_end_all "$@"
    beside+=($!)
}
beside=()

or_end_all() {
    trap - EXIT
    "$@" || kill -USR1 $$
}

# Waits for all that was started by `beside`.
all_beside() {
    local job
    for job in "${beside[@]}"; do
        wait "$job"
    done
    beside=()
}

# step TITLE ADVICE COMMAND…: runs the command with its output in a log and then shows one line. When it fails, the end of
# the log and the advice are shown and the script ends. Not inside `if` or `||`, where errexit is off. The size of the
# folder `watched`, if set, shows how far the step is.
step() {
    local title=$1 advice=$2 log status started=$EPOCHSECONDS state=""
    shift 2
    log=$(mktemp "${TMPDIR:-/tmp}/orvane-setup.XXXXXX.log")
    if [[ -n $ORVANE_STEPS ]]; then
        state=$ORVANE_STEPS/$BASHPID
        printf '%s\n' "$title" "$started" "$log" "${watched:-}" >"$state"
    else
        say "$title …"
    fi
    set +e
    (set -e && "$@") >"$log" 2>&1 </dev/null
    status=$?
    set -e
    [[ -z $state ]] || rm -f "$state"
    if ((status != 0)); then
        tail -n 20 "$log" | sed 's/^/    /' >&2
        say "The whole output is in $log"
        fail "$title: failed. $advice"
    fi
    rm -f "$log"
    say "$title: $(duration $((EPOCHSECONDS - started)))"
}
