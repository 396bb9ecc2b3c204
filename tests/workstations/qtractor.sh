# shellcheck shell=sh disable=SC2154 # variables come from the scripts beside it
# Qtractor 0.9. Its session is written here: for each plug-in a mono bus of its own, and a track with a
# clip of audio and the plug-in. Everything else is done in its windows, on a screen of 1366x768.

qtractor_spot() {
    case $1 in
    save) echo 96 58 ;;
    begin) echo 30 98 ;;
    stop) echo 209 98 ;;
    play) echo 241 98 ;;
    link) echo 185 200 ;;
    apt) echo 185 296 ;;
    doubler) echo 185 392 ;;
    esac
}
qtractor_click() {
    # shellcheck disable=SC2046 # two numbers
    click_at $(qtractor_spot "$1")
}

stories="$stories take_unmonitored mono_on_stereo"
story_take_unmonitored() {
    begin take_unmonitored
    take_of link
}
# Qtractor makes two instances of the plug-in then, and one window.
story_mono_on_stereo() {
    begin mono_on_stereo
    open link
    take link 4
    sleep 5
    check_region link 0 "$taken"
}

ws_cannot() { :; }
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
    link) echo 900 130 ;;
    apt) echo 470 420 ;;
    doubler) echo 900 420 ;;
    esac
}
ws_input() { :; }
ws_output() { echo "Qtractor:$1/out_1"; }

bus() {
    channels=1
    [ "$story" != mono_on_stereo ] || channels=2
    cat <<BUS
   <audio-bus name="$1" mode="duplex">
    <monitor>0</monitor>
    <channels>$channels</channels>
    <auto-connect>1</auto-connect>
    <input-gain>1</input-gain>
    <output-gain>1</output-gain>
   </audio-bus>
BUS
}
track() {
    cat <<TRACK
  <track name="$1" type="audio">
   <properties>
    <input-bus>$1</input-bus>
    <output-bus>$1</output-bus>
   </properties>
   <state><mute>0</mute><solo>0</solo><record>0</record><monitor>$monitored</monitor><gain>1</gain><panning>0</panning></state>
   <view><height>96</height></view>
   <clips>
    <clip name="voice">
     <properties>
      <name>voice</name>
      <start>$play_at</start>
      <offset>0</offset>
      <length>$((play_end - play_at))</length>
      <gain>1</gain>
      <fade-in type="InQuad">0</fade-in>
      <fade-out type="OutQuad">0</fade-out>
     </properties>
     <audio-clip>
      <filename>voice.wav</filename>
      <time-stretch>1</time-stretch>
      <pitch-shift>1</pitch-shift>
     </audio-clip>
    </clip>
   </clips>
   <plugins>
    <plugin type="LV2">
     <filename>urn:tavarin:pro:$1</filename>
     <index>0</index>
     <label>$(ws_title "$1" | tr ' ' _)</label>
     <activated>1</activated>
    </plugin>
   </plugins>
  </track>
TRACK
}
# A track that is not monitored runs its plug-ins only while the transport rolls.
write_session() {
    monitored=1
    case $story in *_unmonitored) monitored=0 ;; esac
    cat <<BEGINNING
<!DOCTYPE qtractorSession>
<session version="Qtractor 0.9.31" name="session">
 <properties>
  <directory>$(dirname "$session")</directory>
  <sample-rate>48000</sample-rate>
  <tempo>120</tempo>
  <ticks-per-beat>960</ticks-per-beat>
  <beats-per-bar>4</beats-per-bar>
 </properties>
 <files><audio-list><file name="voice.wav">voice.wav</file></audio-list></files>
 <devices>
  <audio-engine>
   <audio-control><transport-mode>duplex</transport-mode></audio-control>
BEGINNING
    for kind in link apt doubler; do bus "$kind"; done
    printf '  </audio-engine>\n </devices>\n <tracks>\n'
    for kind in link apt doubler; do track "$kind"; done
    printf ' </tracks>\n</session>\n'
}
has_plugins() { jack_lsp | grep -q '^Qtractor:doubler/out_1$'; }
# Where there is no ALSA sequencer, one that does nothing lets Qtractor start.
silent_sequencer() {
    [ ! -e /dev/snd/seq ] || return 0
    cc -shared -fPIC -o "$story_dir/silent_sequencer.so" "$here/silent_sequencer.c" ||
        fail "no silent sequencer can be made"
    echo "LD_PRELOAD=$story_dir/silent_sequencer.so"
}

ws_start() {
    session=$story_dir/session/session.qtr
    if [ ! -f "$session" ]; then
        mkdir -p "$story_dir/session"
        cp "$input_file" "$story_dir/session/voice.wav"
        write_session >"$session"
    fi
    preload=$(silent_sequencer)
    # shellcheck disable=SC2086 # an assignment or none
    start qtractor env $preload qtractor "$session"
    qtractor=$started
    within 30 has_plugins || fail "Qtractor does not open the session"
    within 20 has_window "session.qtr" || fail "Qtractor shows no window"
    main_window=$(find_window "session.qtr")
    xdotool windowsize "$main_window" 1024 700
    xdotool windowmove "$main_window" 1 20
    sleep 2
}
ws_open() {
    xdotool windowactivate "$main_window"
    sleep 0.3
    # shellcheck disable=SC2046 # two numbers
    xdotool mousemove --sync $(qtractor_spot "$1")
    sleep 0.3
    xdotool click --repeat 2 --delay 80 1
}
# The first time it goes back to the first clip only.
ws_rewind() {
    qtractor_click begin
    qtractor_click begin
}
ws_play() { qtractor_click play; }
ws_stop() { qtractor_click stop; }
ws_save() {
    qtractor_click save
    sleep 2
}
ws_end() {
    xdotool windowactivate "$main_window"
    sleep 0.5
    xdotool key alt+F4
    within 20 gone "$qtractor" || fail "Qtractor does not end"
}
# The clock at the top of its window.
ws_goes_on() { area_moves 352 86 120 24 5; }
ws_closed() { ! has_window "$(ws_title "$1")"; }
