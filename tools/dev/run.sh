# ./dev run: starts the program that was just built. Sourced by ./dev.

started=()     # what was started besides the program, ended with it
throw_away=()  # folders that go with it

end_what_was_started() {
    local pid
    for pid in "${started[@]}"; do kill "$pid" 2>/dev/null || true; done
    for pid in "${started[@]}"; do wait "$pid" 2>/dev/null || true; done
    rm -rf "${throw_away[@]}"
}

# start COMMAND...: beside the program, in a session of its own, which Ctrl+C does not reach: what
# the program stands on has to outlive it.
start() {
    setsid "$@" >/dev/null 2>&1 &
    started+=($!)
}

make_throw_away_folder() {
    throw_away_folder=$(mktemp -d "${TMPDIR:-/tmp}/valdorn-$1.XXXXXX")
    throw_away+=("$throw_away_folder")
}

# A home folder with one registered runner whose executable is the demo runner.
make_throw_away_home() {
    make_throw_away_folder demo
    local support="$throw_away_folder/Library/Application Support/Valdorn"
    mkdir -p "$support" "$throw_away_folder/actrunner"
    cp "$build/bin/demo_runner" "$throw_away_folder/actrunner/act_runner"
    printf '%s' '[{"id":"legacy","name":"demo","instanceURL":"http:\/\/demo.invalid","labels":"linux:host","extraPath":"","legacy":true}]' \
        >"$support/runners.json"
    (cd "$support" && "$throw_away_folder/actrunner/act_runner" register --no-interactive \
        --instance http://demo.invalid --token demo --name demo --labels linux:host >/dev/null 2>&1)
}

choose_home() {
    if [ -x "$HOME/actrunner/act_runner" ]; then
        echo "Valdorn runs with your own act_runner: $HOME/actrunner/act_runner"
        return
    fi
    if [ -e "$HOME/actrunner/act_runner" ]; then
        echo "$HOME/actrunner/act_runner is not executable: chmod +x it to run with it." >&2
    fi
    make_throw_away_home
    is_home_thrown_away=1
    # Where the display's key is looked for when nothing else is said.
    export XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority}
    export HOME=$throw_away_folder
    unset XDG_CONFIG_HOME XDG_STATE_HOME XDG_DATA_HOME XDG_CACHE_HOME
    echo "No ~/actrunner/act_runner of yours to run: Valdorn runs with the demo runner, which plays a"
    echo "job every 50 seconds or so, in a throw-away home, $HOME (removed at the end)."
}

# await FILE WHAT: until somebody has written a line into the file.
await() {
    for _ in $(seq 200); do
        [ "$(wc -l <"$1")" -gt 0 ] && return
        sleep 0.05
    done
    echo "./dev: $2 did not start" >&2
    exit 1
}

# Display, session bus, window manager and a panel with a tray, all our own.
start_virtual_desktop() {
    install_packages "${desktop_packages[@]}"
    make_throw_away_folder desktop
    local folder=$throw_away_folder
    unset XAUTHORITY
    export DISPLAY DBUS_SESSION_BUS_ADDRESS
    mkdir --mode=700 "$folder/run"
    # Your own home has one Valdorn, wherever it is started: its lock stays where it is.
    [ -z "${is_home_thrown_away-}" ] || export XDG_RUNTIME_DIR=$folder/run
    touch "$folder/display" "$folder/bus"

    XDG_RUNTIME_DIR=$folder/run start Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$folder/display"
    await "$folder/display" "the virtual display"
    DISPLAY=:$(cat "$folder/display")
    # The panel's settings come through a service of this bus, so the bus gets the folder, too.
    write_panel_settings "$folder"
    XDG_RUNTIME_DIR=$folder/run XDG_CONFIG_HOME=$folder start dbus-daemon --session --nofork --print-address=3 3>"$folder/bus"
    await "$folder/bus" "the session bus"
    DBUS_SESSION_BUS_ADDRESS=$(cat "$folder/bus")
    XDG_RUNTIME_DIR=$folder/run start openbox
    XDG_RUNTIME_DIR=$folder/run XDG_CONFIG_HOME=$folder start xfce4-panel --disable-wm-check
    cat <<EOT
No display here: Valdorn runs on the virtual display $DISPLAY.
  To look at it:   DISPLAY=$DISPLAY import -window root valdorn.png
  or, live, with a VNC viewer at localhost:5900 (package x11vnc):
                   x11vnc -display $DISPLAY -localhost -forever
EOT
}

# A panel at the top with nothing but a tray.
write_panel_settings() {
    local folder=$1/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$folder"
    cat >"$folder/xfce4-panel.xml" <<'EOT'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position-locked" type="bool" value="true"/>
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray"/>
  </property>
</channel>
EOT
}

# Waits for the program to end by itself. Ctrl+C, and the end of the terminal, reach the program
# too; whoever ends this script alone ends the program first.
run_to_its_end() {
    "$@" &
    local pid=$! status=0
    trap : INT HUP
    trap 'kill -TERM '$pid' 2>/dev/null || true' TERM
    while kill -0 "$pid" 2>/dev/null; do
        status=0
        wait "$pid" || status=$?
    done
    trap - INT TERM HUP
    [ "$status" -eq 0 ] || echo "Valdorn ended with status $status." >&2
    return "$status"
}

# run_valdorn BUILD-FOLDER
run_valdorn() {
    build=$1
    trap end_what_was_started EXIT
    choose_home
    [ -n "${DISPLAY-}${WAYLAND_DISPLAY-}" ] || start_virtual_desktop
    echo "Valdorn starts. Ctrl+C ends it."
    run_to_its_end "$build/bin/valdorn"
}
