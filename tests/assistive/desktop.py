"""A desktop that nobody sees or hears: an X server and a loudspeaker of its own, and a program that is used from outside."""

import contextlib
import os
import pathlib
import struct
import subprocess
import tempfile
import time

PATIENCE = 30  # seconds until what does not come counts as missing


def eventually(condition, what):
    """The first true answer of `condition`, which is asked again until it gives one."""
    end = time.monotonic() + PATIENCE
    while not (answer := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"did not come about: {what() if callable(what) else what}")
        time.sleep(0.08)
    return answer


class Desktop:
    """X server, session bus, sound server and program, which end with it. One a process, before it uses the accessibility bus."""

    def __init__(self, command):
        with contextlib.ExitStack() as stack:
            self._start_all(command, stack)
            self._everything = stack.pop_all()

    def _start_all(self, command, stack):
        def start(arguments, **options):
            process = subprocess.Popen(arguments, **{"stderr": subprocess.DEVNULL, **options})
            stack.callback(process.wait, PATIENCE)
            stack.callback(process.terminate)
            return process

        home = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(ignore_cleanup_errors=True)))
        with open(home / "display", "w+") as display:
            start(["Xvfb", "-displayfd", str(display.fileno()), "-screen", "0", "1280x1024x24", "-nolisten", "tcp", "-noreset", "-fbdir", home],
                  pass_fds=[display.fileno()])
            number = eventually(lambda: (home / "display").read_text().strip(), "an X server")
        self._screen = home / "Xvfb_screen0"
        os.environ.update(
            DISPLAY=f":{number}", PULSE_SERVER=f"unix:{home}/loudspeaker", HOME=str(home), XDG_RUNTIME_DIR=str(home),
            XDG_CONFIG_HOME=str(home), XDG_DATA_HOME=str(home))
        # After the X server, because the accessibility bus presses keys for its clients and finds the server in its environment.
        bus = start(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE, text=True)
        stack.callback(bus.stdout.close)
        os.environ["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
        (home / "sound").write_text("load-module module-null-sink\n"
                                    f"load-module module-native-protocol-unix auth-anonymous=1 socket={home}/loudspeaker\n")
        start(["pulseaudio", "-n", "-F", home / "sound", "--daemonize=no", "--use-pid-file=no", "--exit-idle-time=-1"])
        eventually((home / "loudspeaker").exists, "a sound server")
        self._log = stack.enter_context(open(home / "log", "a+"))
        self._program = start(command, stdout=self._log, stderr=subprocess.STDOUT, env=dict(
            os.environ, QT_QPA_PLATFORM="xcb", QT_QUICK_BACKEND="software", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_SCALE_FACTOR="1"))

    def is_running(self):
        return self._program.poll() is None

    def log(self):
        """What the program wrote so far."""
        self._log.seek(0)
        return self._log.read()

    def close(self):
        self._everything.close()

    def picture(self, place):
        """The points of `place` (x, y, width, height), row by row, four bytes a point."""
        x, y, width, height = place
        dump = self._screen.read_bytes()  # X window dump: a header of 32-bit words, a table of colours, the points
        header, row, colours = (struct.unpack_from(">I", dump, 4 * field)[0] for field in (0, 12, 19))
        start = header + 12 * colours
        return [dump[start + line * row + 4 * x:][:4 * width] for line in range(max(0, y), y + height)]


def different_points(one, other):
    return sum(a[i:i + 4] != b[i:i + 4] for a, b in zip(one, other) for i in range(0, min(len(a), len(b)), 4))
