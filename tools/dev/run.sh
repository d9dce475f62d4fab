# ./dev run: starts the program that was just built. Sourced by ./dev.

program=build/dev/bin/valdorn
started=()     # what was started besides the program, ended with it
throw_away=()  # folders that go with it

end_what_was_started() {
    local pid
    for pid in "${started[@]}"; do kill "$pid" 2>/dev/null || true; done
    rm -rf "${throw_away[@]}"
}

# A home folder with one registered runner whose executable is the demo runner.
make_throw_away_home() {
    throw_away_home=$(mktemp -d "${TMPDIR:-/tmp}/valdorn-demo.XXXXXX")
    throw_away+=("$throw_away_home")
    local support="$throw_away_home/Library/Application Support/Valdorn"
    mkdir -p "$support" "$throw_away_home/actrunner" "$throw_away_home/run"
    chmod 700 "$throw_away_home/run"
    cp build/dev/bin/demo_runner "$throw_away_home/actrunner/act_runner"
    printf '%s' '[{"id":"legacy","name":"demo","instanceURL":"http:\/\/demo.invalid","labels":"linux:host","extraPath":"","legacy":true}]' \
        >"$support/runners.json"
    (cd "$support" && "$throw_away_home/actrunner/act_runner" register --no-interactive \
        --instance http://demo.invalid --token demo --name demo --labels linux:host >/dev/null 2>&1)
}

choose_home() {
    if [ -x "$HOME/actrunner/act_runner" ]; then
        echo "Valdorn runs with your own act_runner: $HOME/actrunner/act_runner"
        return
    fi
    make_throw_away_home
    export HOME=$throw_away_home XDG_RUNTIME_DIR=$throw_away_home/run
    unset XDG_CONFIG_HOME XDG_STATE_HOME XDG_DATA_HOME XDG_CACHE_HOME
    echo "No ~/actrunner/act_runner: Valdorn runs with the demo runner in a throw-away home,"
    echo "  $HOME (removed at the end)"
}

# The first display number that nobody uses.
free_display() {
    local number=90
    while [ -e "/tmp/.X$number-lock" ] || [ -e "/tmp/.X11-unix/X$number" ]; do
        number=$((number + 1))
    done
    echo ":$number"
}

wait_for_display() {
    local tries
    for tries in $(seq 100); do
        [ -e "/tmp/.X11-unix/X${DISPLAY#:}" ] && return
        sleep 0.1
    done
    echo "./dev: the virtual display $DISPLAY did not start" >&2
    exit 1
}

# Display, session bus, window manager and a panel with a tray, all our own.
start_virtual_desktop() {
    install_packages "${desktop_packages[@]}"
    export DISPLAY
    DISPLAY=$(free_display)
    Xvfb "$DISPLAY" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
    started+=($!)
    wait_for_display
    local settings address
    settings=$(mktemp -d "${TMPDIR:-/tmp}/valdorn-desktop.XXXXXX")
    throw_away+=("$settings")
    write_panel_settings "$settings"
    # The panel's settings come through a service of this bus, so the bus gets the folder, too.
    address=$(XDG_CONFIG_HOME=$settings dbus-daemon --session --fork --print-address=1 --print-pid=1)
    export DBUS_SESSION_BUS_ADDRESS=${address%%$'\n'*}
    started+=("${address##*$'\n'}")
    openbox >/dev/null 2>&1 &
    started+=($!)
    XDG_CONFIG_HOME=$settings xfce4-panel --disable-wm-check >/dev/null 2>&1 &
    started+=($!)
    cat <<EOT
No display here: Valdorn runs on the virtual display $DISPLAY.
  To look at it:   DISPLAY=$DISPLAY import -window root valdorn.png
  or, live:        apt-get install x11vnc; x11vnc -display $DISPLAY -localhost
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
    <property name="panel-1" type="empty">
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

run_valdorn() {
    trap end_what_was_started EXIT
    choose_home
    [ -n "${DISPLAY-}${WAYLAND_DISPLAY-}" ] || start_virtual_desktop
    echo "Valdorn starts. Ctrl+C ends it."
    # Not exec: what was started here has to be ended afterwards.
    "$program" || echo "Valdorn ended with status $?." >&2
}
