# shellcheck shell=sh disable=SC2154 # variables come from the scripts beside it
# Sourced by tests/workstations/run. Each story begins with a new host and a new session of the
# workstation, and ends with a picture.

# shellcheck disable=SC2034 # read by run
stories="window rest take_link take_apt take_doubler return_link return_apt return_doubler together reopen
    halted_open halted_capture halted_handover halted_return halted_save halted_close
    killed_open killed_capture killed_handover killed_return killed_save killed_close"

begin() {
    [ -z "$(ws_cannot "$1")" ] || not_tried "$(ws_cannot "$1")"
    start_host first
    ws_start
}

story_window() {
    begin window
    ws_open link
    within 20 plugin_window link || fail "no window \"$(ws_title link)\" is shown"
    sleep 2
    first=$(find_window "$(ws_title link)")
    in_front "$first" || fail "the window is not in front"
    ws_open doubler
    within 20 plugin_window doubler || fail "no window \"$(ws_title doubler)\" is shown"
    sleep 1
    second=$(find_window "$(ws_title doubler)")
    # Where the workstation puts its own is its business.
    [ "$(($(plugin_window link)))" != "$((first))" ] || [ "$(origin "$first")" != "$(origin "$second")" ] ||
        fail "both windows lie on one spot: $(origin "$first")"
    in_front "$second" || fail "the second window is not in front"
    picture "$story-open"
    press doubler capture
    leaves_keys doubler || fail "a click takes the keyboard from the workstation"
    close_window doubler
    within 6 ws_closed doubler || fail "the window does not close"
    within 3 one_view || fail "the closed window's program stays: $(views)"
}
# Inside the workstation's window the keys are the workstation's.
leaves_keys() {
    inner=$(plugin_window "$1")
    outer=$(find_window "$(ws_title "$1")")
    [ "$((inner))" = "$((outer))" ] || [ "$(xdotool getwindowfocus -f)" != "$((inner))" ]
}
one_view() { [ "$(views | wc -l)" = 1 ]; }
in_front() {
    front=$(xprop -root _NET_CLIENT_LIST_STACKING | grep -o '0x[0-9a-f]*' | tail -1)
    [ "$front" = "$(printf '0x%x' "$1")" ]
}
origin() { xdotool getwindowgeometry "$1" | sed -n 's/ *Position: \([0-9,-]*\).*/\1/p'; }

# Nothing is captured while the transport stands still, also when it has never rolled.
story_rest() {
    begin rest
    open link
    press link capture
    sleep 3
    press link capture
    sleep 4
    ! has_region link 0 || fail "a take was made at rest: $(regions link 0)"
}

take_of() {
    open "$1"
    take "$1" 4
    check_region "$1" 0 "$taken"
}
story_take_link() {
    begin take_link
    take_of link
}
story_take_apt() {
    begin take_apt
    take_of apt
}
story_take_doubler() {
    begin take_doubler
    take_of doubler
}

# return_of KIND TRACK: the result on that track is heard at its place.
return_of() {
    within 20 has_region "$1" "$2" || fail "the host made nothing of the take of $1"
    regions "$1" "$2" >"$story_dir/result"
    read -r from to <"$story_dir/result"
    fetch "$1"
    roll 5.5 "$1"
    check_heard "$1" "$from" "$to"
}
story_return_link() {
    begin return_link
    take_of link
    hand_over_other
    return_of link 2
}
story_return_apt() {
    begin return_apt
    take_of apt
    press apt dub
    take apt 3
    check_region apt 1 "$taken"
    return_of apt 2
}
story_return_doubler() {
    begin return_doubler
    take_of doubler
    return_of doubler 1
}

# Three plug-ins capture at once; the guide of one and the voice of another land on one track.
story_together() {
    begin together
    for kind in link apt doubler; do open "$kind"; done
    touch "$story_dir/mark"
    sleep 0.1
    for kind in link apt doubler; do press "$kind" capture; done
    roll 4 link apt doubler
    within 15 three_takes || fail "there are $(takes | wc -l) takes of three"
    takes >"$story_dir/takes"
    within 15 has_region link 0 || fail "the host has no region of link"
    within 15 has_region apt 0 || fail "the host has no region of apt and doubler"
    for kind in link apt; do
        regions "$kind" 0 | head -1 >"$story_dir/regions"
        read -r region_start region_end <"$story_dir/regions"
        while read -r taken; do
            same "a take" "$taken" "$input_file" --first-from $((play_at - region_start)) \
                --frames $((region_end - guard - play_at))
        done <"$story_dir/takes"
    done
}
takes() { find "$captures" -name 'Take_*.wav' -newer "$story_dir/mark"; }
three_takes() { [ "$(takes | wc -l)" -eq 3 ]; }

# Saved with Return on, opened again without a host: the returned file is still heard.
story_reopen() {
    begin reopen
    take_of link
    hand_over_other
    fetch link
    ws_save
    ws_end
    end_process "$host"
    ws_start
    roll 5.5 link
    check_heard link "$other_start" "$other_end"
}

# --- the host hangs, or dies, in the middle of a step ---

# trouble HOW STEP COMMAND...: the host is halted just before the command, and killed just after it.
# A second later nobody would speak to it: its heartbeat would be old.
trouble() {
    how=$1
    step=$2
    shift 2
    kill -STOP "$host"
    "$@"
    sleep 0.5
    [ "$how" = halted ] || kill -KILL "$host"
    picture "$story-hanging"
    ws_goes_on || fail "the workstation stands still: host $how, $step"
}
recover() {
    if [ "$how" = halted ]; then
        kill -CONT "$host"
    else
        wait "$host" 2>/dev/null || true
        start_host second
    fi
}

step_open() {
    ws_play
    trouble "$1" open ws_open link
    recover
    within 20 plugin_window link || fail "the window did not come"
}
step_capture() {
    open link
    listen link
    ws_play
    aim link capture
    trouble "$1" capture push
    ws_stop
    recover
    within 20 has_region link 0 || fail "the take did not arrive"
}
stop_and_play() {
    ws_stop
    sleep 0.7
    ws_play
}
step_handover() {
    open link
    press link capture
    listen link
    ws_play
    sleep 3
    trouble "$1" handover stop_and_play
    ws_stop
    recover
    within 30 has_region link 0 || fail "the take did not arrive"
    sleep 3
    [ "$(regions link 0 | sort -u | wc -l)" = "$(regions link 0 | wc -l)" ] ||
        fail "a take arrived twice: $(regions link 0)"
}
step_return() {
    open link
    take link 3
    check_region link 0 "$taken"
    ws_rewind
    ws_play
    touch "$story_dir/mark"
    aim link return
    trouble "$1" return push
    ws_stop
    recover
    [ "$how" = killed ] || within 20 is_there Return_ || fail "nothing came back"
}
step_save() {
    open link
    press link capture
    ws_play
    sleep 3
    ws_stop
    ws_play
    trouble "$1" save ws_save
    ws_stop
    recover
    within 30 has_region link 0 || fail "the take did not arrive"
}
close_window() { xdotool windowactivate "$(find_window "$(ws_title "$1")")" key alt+F4; }
# The window is closed while it waits for the host.
step_close() {
    open link
    press link capture
    ws_play
    sleep 3
    trouble "$1" close stop_and_play
    close_window link
    within 6 ws_closed link || fail "the window does not close"
    within 3 no_views || fail "the closed window's program stays: $(views)"
    ws_stop
}
for how in halted killed; do
    for step in open capture handover return save close; do
        eval "story_${how}_$step() { begin ${how}_$step; step_$step $how; }"
    done
done
