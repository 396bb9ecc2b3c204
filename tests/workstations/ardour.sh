# shellcheck shell=sh disable=SC2154 # variables come from the scripts beside it
# Ardour 7. Its session is prepared by its own interpreter and has a region of audio on each track;
# everything else is done in its windows, which stand as below on a screen of 1366x768.

ardour_spot() {
    case $1 in
    audio_system) echo 690 263 ;;
    jack) echo 660 285 ;;
    connect) echo 970 565 ;;
    mixer) echo 1335 108 ;;
    begin) echo 71 79 ;;
    play) echo 166 78 ;;
    stop) echo 191 78 ;;
    link) echo 340 243 ;;
    apt) echo 450 243 ;;
    doubler) echo 560 243 ;;
    esac
}
ardour_click() {
    # shellcheck disable=SC2046 # two numbers
    click_at $(ardour_spot "$1")
}
session_directory() { echo "$story_dir/session"; }

ws_cannot() { :; }
ws_known() { :; }
ws_title() {
    case $1 in
    link) echo "Voice1: Tavarin Link" ;;
    apt) echo "Voice2: Tavarin APT Link" ;;
    doubler) echo "Voice3: Tavarin Doubler Link" ;;
    esac
}
ws_place() {
    case $1 in
    link) echo 630 130 ;;
    apt) echo 20 420 ;;
    doubler) echo 450 420 ;;
    esac
}
ws_input() { :; }
ws_output() {
    case $1 in
    link) echo "ardour:Voice1/audio_out 1" ;;
    apt) echo "ardour:Voice2/audio_out 1" ;;
    doubler) echo "ardour:Voice3/audio_out 1" ;;
    esac
}

# A source, and a region of it on every track. Positions are in Ardour's ticks, 5880 to a sample.
place_audio() {
    session=$(session_directory)
    mkdir -p "$session/interchange/session/audiofiles"
    cp "$input_file" "$session/interchange/session/audiofiles/voice.wav"
    length=a$(((play_end - play_at) * 5880))@a$((play_at * 5880))
    # It was made without a device, and that it has another one now nobody wants to be asked about.
    awk -v length_at="$length" '
        /<EngineHints / { next }
        /<Sources\/>/ {
            print "<Sources><Source name=\"voice.wav\" take-id=\"\" type=\"audio\" flags=\"\" id=\"9001\"" \
                " timestamp=\"0\" natural-position=\"a0\" captured-for=\"Voice\" channel=\"0\" origin=\"\" gain=\"1\"/></Sources>"
            next
        }
        /<Playlist .*\/>/ {
            sub(/\/>/, ">")
            print $0 "<Region name=\"voice\" muted=\"0\" opaque=\"1\" locked=\"0\" video-locked=\"0\" automatic=\"0\"" \
                " whole-file=\"0\" import=\"0\" external=\"0\" sync-marked=\"0\" left-of-split=\"0\" right-of-split=\"0\"" \
                " hidden=\"0\" position-locked=\"0\" valid-transients=\"0\" start=\"a0\" length=\"" length_at "\"" \
                " sync-position=\"a0\" ancestral-start=\"a0\" ancestral-length=\"a0@a0\" stretch=\"1\" shift=\"1\"" \
                " layering-index=\"0\" tags=\"\" contents=\"0\" envelope-active=\"0\" default-fade-in=\"0\"" \
                " default-fade-out=\"0\" fade-in-active=\"0\" fade-out-active=\"0\" scale-amplitude=\"1\" id=\"" 9100 + NR "\"" \
                " type=\"audio\" first-edit=\"nothing\" source-0=\"9001\" master-source-0=\"9001\" channels=\"1\"/></Playlist>"
            next
        }
        { sub(/ id-counter="[0-9]*"/, " id-counter=\"20000\""); print }' \
        "$session/session.ardour" >"$session/with-audio"
    mv "$session/with-audio" "$session/session.ardour"
}
# Ardour asks the new user some questions, and everybody about memory.
answer_questions() {
    mkdir -p "$XDG_CONFIG_HOME/ardour7"
    : >"$XDG_CONFIG_HOME/ardour7/.a7"
    echo '<instant><no-memory-warning/></instant>' >"$XDG_CONFIG_HOME/ardour7/instant.xml"
}
has_plugins() { jack_lsp | grep -q '^ardour:Voice3/audio_out 1$'; }

asks_or_has_started() { has_window "Audio/MIDI Setup" || has_plugins; }

# Two of Ardour's threads may speak to the JACK server at once as it opens a session; the server then
# reads what nobody wrote, and sends Ardour away.
ws_excuse() {
    ! grep -q 'Unknown request' "$story_dir/jackd.log" || echo "Ardour and the JACK server fell out"
}
ws_start() {
    if [ ! -d "$(session_directory)" ]; then
        answer_questions
        timeout 60 ardour7-lua "$here/ardour-session.lua" "$(session_directory)" ||
            fail "ardour7-lua made no session"
        place_audio
    fi
    for try in 1 2 3; do
        open_session
        sleep 2
        if [ -z "$(ws_excuse)" ] || [ "$try" = 3 ]; then break; fi
        end_process "$ardour"
        end_process "$server"
        start_server
    done
}
open_session() {
    start ardour ardour -a -n "$(session_directory)"
    ardour=$started
    within 40 asks_or_has_started || fail "Ardour does not start"
    sleep 2
    # It asks this once only.
    if has_window "Audio/MIDI Setup"; then
        ardour_click audio_system
        sleep 0.5
        ardour_click jack
        sleep 1
        ardour_click connect
    fi
    within 40 has_plugins || fail "Ardour does not open the session"
    within 20 has_window "session - Ardour" || fail "Ardour shows no window"
    sleep 3
    # It remembers its window, and not quite where it was.
    main_window=$(find_window "session - Ardour")
    xdotool windowsize "$main_window" 1348 713
    xdotool windowmove "$main_window" 8 15
    sleep 1
    ardour_click mixer
    sleep 1
}
ws_open() {
    # shellcheck disable=SC2046 # two numbers
    xdotool mousemove --sync $(ardour_spot "$1")
    sleep 0.3
    xdotool click --repeat 2 --delay 80 1
}
ws_rewind() { ardour_click begin; }
ws_play() { ardour_click play; }
ws_stop() { ardour_click stop; }
ws_save() {
    xdotool windowactivate "$(find_window "session - Ardour")"
    sleep 0.5
    xdotool key ctrl+s
    sleep 2
}
ws_end() {
    xdotool key ctrl+q
    within 20 gone "$ardour" || fail "Ardour does not end"
}
# The time-code clock at the top of its window.
ws_goes_on() { area_moves 680 66 140 24 5; }
ws_closed() { ! has_window "$(ws_title "$1")"; }
