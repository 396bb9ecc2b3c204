# shellcheck shell=sh disable=SC2154 # variables come from the scripts beside it
# jalv, jalv.gtk3 and jalv.qt5: a process for each plug-in. They follow the transport of the server, and
# have neither a clock nor, in jalv itself, a session. jalv lets the plug-in show a window of its own, the
# others put it into theirs.

ws_cannot() {
    case $1 in *save | reopen) echo "$workstation has no session that the transport belongs to" ;; esac
}
ws_known() { :; }
ws_title() {
    case $1 in
    link) echo "Tavarin Link" ;;
    apt) echo "Tavarin APT Link" ;;
    doubler) echo "Tavarin Doubler Link" ;;
    esac
}
ws_place() {
    case $1 in
    link) echo 20 20 ;;
    apt) echo 470 20 ;;
    doubler) echo 920 20 ;;
    esac
}
# jalv.qt5 takes no options.
jack_name() { if [ "$workstation" = jalv.qt5 ]; then ws_title "$1"; else echo "$1"; fi; }
ws_input() { echo "$(jack_name "$1"):in_1"; }
ws_output() { echo "$(jack_name "$1"):out_1"; }

ws_start() { :; }
ws_open() {
    case $workstation in
    jalv) start "jalv-$1" jalv -s -n "$1" "urn:tavarin:pro:$1" ;;
    jalv.gtk3) start "jalv-$1" jalv.gtk3 --jack-name "$1" "urn:tavarin:pro:$1" ;;
    jalv.qt5) start "jalv-$1" jalv.qt5 "urn:tavarin:pro:$1" ;;
    esac
    jalv=$started
}
transport() { printf '%s\n' "$@" | jack_transport >/dev/null; }
ws_rewind() { transport stop "locate 0"; }
ws_play() { transport play; }
ws_stop() { transport stop; }

# It has no clock to look at: the server's is its own. Whether its window hangs, closing it tells.
ws_goes_on() {
    before=$("$bin/jack-deck" --position)
    sleep 2
    lives "$jalv" && [ "$("$bin/jack-deck" --position)" -gt "$before" ]
}
# jalv itself goes on without its window, until it is interrupted.
ws_closed() {
    if [ "$workstation" = jalv ]; then
        ! has_window "$(ws_title "$1")"
    else
        gone "$jalv"
    fi
}
