# shellcheck shell=sh disable=SC2034,SC2154 # variables go to and come from the scripts beside it
# Sourced by tests/workstations/run: the pointer, windows, the host, rolling, comparing. A workstation's
# own file says how it is started and where its buttons are; the stories are in stories.sh.

# Where things are in a plug-in's window, from the upper left corner of its contents.
window_size=420x308
spot() {
    case $1 in
    dub) echo 197 85 ;;
    capture) echo 80 255 ;;
    return) echo 210 255 ;;
    *) fail "there is no spot called $1" ;;
    esac
}

# What is heard on every track: four seconds of noise, one second into the session.
play_at=48000
play_end=240000
# Workstations fade what they play for a moment when they start and stop, and so do plug-ins.
guard=4800
fade=240

# A reason why the story proves nothing, or nothing.
ws_excuse() { :; }
fail() {
    excuse=$(ws_excuse)
    [ -z "$excuse" ] || not_tried "$excuse"
    echo "$*" >"$story_dir/why"
    echo "FAILED: $*"
    exit 1
}
not_tried() {
    echo "$*" >"$story_dir/why"
    exit 77
}

# within SECONDS COMMAND...: tries it until it succeeds.
within() {
    tries=$(($1 * 5))
    shift
    until "$@" >/dev/null 2>&1; do
        tries=$((tries - 1))
        [ "$tries" -gt 0 ] || return 1
        sleep 0.2
    done
}

# start LOG COMMAND...: in the background, and ended with the story.
start() {
    log=$story_dir/$1.log
    shift
    "$@" >"$log" 2>&1 </dev/null &
    started=$!
    echo "$started" >>"$story_dir/processes"
}
lives() { kill -0 "$1" 2>/dev/null; }
end_process() {
    kill -CONT "$1" 2>/dev/null || return 0
    kill "$1" 2>/dev/null || true
    within 3 gone "$1" || kill -KILL "$1" 2>/dev/null || true
    wait "$1" 2>/dev/null || true
}
gone() { ! lives "$1"; }
# The last first: the server ends when nobody needs it any more.
end_processes() {
    [ -f "$story_dir/processes" ] || return 0
    tac "$story_dir/processes" | while read -r process; do end_process "$process"; done
}

picture() { import -window root "$pictures/$workstation-$1.png" 2>/dev/null || true; }

# --- windows and the pointer ---

# Windows that the window manager knows: what is inside of them may have the same name.
windows_called() {
    xprop -root _NET_CLIENT_LIST | grep -o '0x[0-9a-f]*' | while read -r id; do
        case $(xdotool getwindowname "$id" 2>/dev/null) in *"$1"*) echo "$id" ;; esac
    done
}
find_window() { windows_called "$1" | tail -1; }
has_window() { [ -n "$(find_window "$1")" ]; }

# The view's own window: it stands by itself, or inside the workstation's window of the plug-in.
plugin_window() {
    outer=$(find_window "$(ws_title "$1")")
    [ -n "$outer" ] || return 1
    xwininfo -tree -id "$outer" |
        sed -n "s/^.*\\(0x[0-9a-f]*\\) .*\"tavarin-view\".* $window_size[+-].*/\\1/p" | head -1 | grep . && return
    xprop -id "$outer" WM_CLASS | grep -q '"tavarin-view"' && echo "$outer"
}
# The processes of this story's windows.
views() {
    for process in $(pgrep -x tavarin-view); do
        ! grep -qsaF "$captures" "/proc/$process/environ" || echo "$process"
    done
}
no_views() { [ -z "$(views)" ]; }

# A click that is too quick is none.
push() {
    xdotool mousedown 1
    sleep 0.1
    xdotool mouseup 1
    sleep 0.2
}
click_at() {
    xdotool mousemove --sync "$1" "$2"
    sleep 0.2
    push
}
# aim KIND SPOT: the pointer there, in a plug-in's window that is brought to the front.
aim() {
    id=$(plugin_window "$1") || fail "there is no window of $1"
    xdotool windowactivate "$(find_window "$(ws_title "$1")")"
    sleep 0.4
    # shellcheck disable=SC2046 # two numbers
    xdotool mousemove --window "$id" $(spot "$2")
    sleep 0.2
}
press() {
    aim "$1" "$2"
    push
}
# open KIND: opens the plug-in's window and puts it where it hides neither clocks nor other windows.
open() {
    ws_open "$1"
    within 20 plugin_window "$1" || fail "no window \"$(ws_title "$1")\" is shown"
    # shellcheck disable=SC2046 # two numbers
    xdotool windowmove "$(find_window "$(ws_title "$1")")" $(ws_place "$1")
    sleep 2
}

# area_moves X Y WIDTH HEIGHT SECONDS: what stands there is another thing each second.
area_moves() {
    seen=""
    for second in $(seq "$5"); do
        now=$(import -window root -crop "$3x$4+$1+$2" +repage png:- | identify -format '%#' png:-)
        [ "$now" != "$seen" ] || return 1
        seen=$now
        sleep 1
    done
}

# --- the JACK server and the host ---

start_server() {
    # Without real-time scheduling a busy machine drops out.
    realtime=-r
    ! chrt -f 10 true 2>/dev/null || realtime=-R
    start jackd jackd $realtime -n "$JACK_DEFAULT_SERVER" -d dummy -r 48000 -p 2048
    server=$started
    within 10 jack_lsp || fail "the JACK server does not start"
}

start_host() {
    mkdir -p "$story_dir/audio"
    start "host-$1" "$bin/tavarin-host" --tracks Guide,Dub,Out --audio "$story_dir/audio" --verbose
    host=$started
    within 5 "$bin/tavarin" link tracks || fail "the host does not start"
}
document() { [ "$1" = link ] || echo --audiosuite; }
# regions KIND TRACK: a line "start end" for each of the host's regions there.
regions() {
    # shellcheck disable=SC2046 # an option or none
    timeout 10 "$bin/tavarin" link $(document "$1") regions |
        awk -v track="$2" '$1 == track && $4 == "to" { print $3, $5 }'
}
has_region() { [ -n "$(regions "$1" "$2")" ]; }

# --- rolling, and comparing what was heard ---

# Whoever has no audio of its own gets it from the deck.
listen() {
    input=$(ws_input "$1")
    : >"$story_dir/deck-$1.log"
    start "deck-$1" "$bin/jack-deck" --listen "$(ws_output "$1")" --record "$story_dir/heard-$1.wav" \
        ${input:+--into "$input" --play "$input_file" --play-at "$play_at"}
    echo "$started" >"$story_dir/deck-$1.pid"
    within 20 grep -q '^listening' "$story_dir/deck-$1.log" ||
        fail "the deck does not hear $1: $(cat "$story_dir/deck-$1.log")"
}
hush() {
    end_process "$(cat "$story_dir/deck-$1.pid")"
    dropouts=$(sed -n 's/^dropouts: //p' "$story_dir/deck-$1.log")
}
# roll SECONDS KIND...: from the beginning, with the deck at every plug-in named.
roll() {
    seconds=$1
    shift
    ws_rewind
    for heard in "$@"; do listen "$heard"; done
    ws_play
    sleep "$seconds"
    ws_stop
    sleep 1
    for heard in "$@"; do hush "$heard"; done
}

# same WHAT ARGUMENT...: sound-compare; a server that lost cycles proves nothing either way.
same() {
    what=$1
    shift
    if "$bin/sound-compare" "$@" >"$story_dir/compared" 2>&1; then
        echo "$what: $(cat "$story_dir/compared")"
        return
    fi
    [ "${dropouts:-0}" = 0 ] || not_tried "the server dropped out $dropouts times"
    fail "$what: $(cat "$story_dir/compared")"
}

newest() { find "$captures" -name "$1*.wav" -newer "$story_dir/mark" | sort | tail -1; }
is_there() { [ -n "$(newest "$1")" ]; }

# check_region KIND TRACK FILE: the host's region is where the take was, and the take is what was played.
check_region() {
    within 15 has_region "$1" "$2" || fail "the host has no region of $1 on track $2"
    regions "$1" "$2" >"$story_dir/regions"
    [ "$(wc -l <"$story_dir/regions")" = 1 ] ||
        fail "the host has more than one region of $1: $(cat "$story_dir/regions")"
    read -r region_start region_end <"$story_dir/regions"
    if [ "$region_start" -gt "$play_at" ] || [ "$region_end" -le $((play_at + 2 * guard)) ]; then
        fail "the region is elsewhere: $region_start to $region_end"
    fi
    end=$((region_end - guard))
    [ "$end" -le "$play_end" ] || end=$play_end
    same "take of $1 at $region_start" "$3" "$input_file" --first-from $((play_at - region_start)) \
        --frames $((end - play_at))
}

# take KIND SECONDS: Capture on, roll, stop, Capture off; $taken is the file.
take() {
    touch "$story_dir/mark"
    sleep 0.1
    press "$1" capture
    roll "$2" "$1"
    within 5 is_there Take_ || fail "$1 captured no take"
    taken=$(newest Take_)
    press "$1" capture
}

# A region of another noise: what Return fetches cannot be mistaken for what was played.
other_start=72000
other_end=168000
hand_over_other() {
    "$bin/sound-compare" --noise 1 --seed 77 "$story_dir/other.wav"
    "$bin/tavarin" link capture "$story_dir/other.wav" --track Out --position $other_start \
        --end $((other_end - other_start)) || fail "the host refuses another region"
}

# fetch KIND: Return on; $returned is the file.
fetch() {
    touch "$story_dir/mark"
    sleep 0.1
    press "$1" return
    within 15 is_there Return_ || fail "nothing came back to $1"
    returned=$(newest Return_)
    sleep 1
}

# check_heard KIND START END: the returned file was heard there, and what was played behind it.
check_heard() {
    heard=$story_dir/heard-$1.wav
    # Looked for where it is not silent.
    inside=$guard
    [ "$2" -ge "$play_at" ] || inside=$((play_at - $2 + guard))
    found=$("$bin/sound-compare" --find "$heard" "$returned" --second-from "$inside" --frames 1000) || {
        [ "${dropouts:-0}" = 0 ] || not_tried "the server dropped out $dropouts times"
        fail "what $1 returned is not heard"
    }
    begin=$((found - inside))
    same "return to $1" "$heard" "$returned" --first-from $((begin + fade)) \
        --second-from "$fade" --frames $(($3 - $2 - 2 * fade))
    same "input behind it" "$heard" "$input_file" --first-from $((begin + $3 - $2 + fade)) \
        --second-from $(($3 + fade - play_at)) --frames 9600
}
