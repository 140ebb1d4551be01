#!/usr/bin/env python3
"""Kelvo holds sleep off while it records and tells the end of a long recording: seen by stand-ins of the services on private buses.

  awake_test.py KELVO OUT [unittest arguments]      OUT: emptied
"""
import ctypes
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import time
import unittest

import dbus
import dbusmock

KELVO, OUT = sys.argv[1], pathlib.Path(sys.argv[2])
SCRIPT = pathlib.Path(__file__).with_name("awake.lua")
LOGIN, LOGIN_PATH, MANAGER = "org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager"
NOTES, NOTES_PATH = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
kLongest = 200  # seconds that a step may take
kBusGivesUpAfter = 25  # seconds without an answer

# The end that the service keeps tells when the last copy of the other one has been closed, as the login service sees it.
INHIBIT = """
import os
keeps, gives = os.pipe()
self.kept = getattr(self, "kept", []) + [keeps]
ret = dbus.types.UnixFd(gives)
os.close(gives)
"""
HELD = """
import select
kept = getattr(self, "kept", [])
ret = len(kept) - len(select.select(kept, [], [], 0)[0])
"""
PR_SET_PDEATHSIG = 1
BUS = """<busconfig>
  <type>{kind}</type>
  <listen>unix:abstract={address}</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""
REFUSE = 'raise dbus.exceptions.DBusException("Not you.", name="org.freedesktop.DBus.Error.AccessDenied")'


def eventually(what, wanted, program):
    deadline = time.monotonic() + kLongest
    while (seen := what()) != wanted:
        if time.monotonic() > deadline or program.poll() is not None:
            raise AssertionError(f"{seen} and not {wanted}; the program: {program.poll()}")
        time.sleep(0.02)


def start(*arguments, **options):
    """A program that doesn't outlive this one, even if this one is killed."""
    libc, parent = ctypes.CDLL(None), os.getpid()

    def die_with_parent():
        libc.prctl(PR_SET_PDEATHSIG, signal.SIGKILL)
        if os.getppid() != parent:
            os._exit(1)

    return subprocess.Popen(arguments, preexec_fn=die_with_parent, **options)


def end(program):
    program.kill()
    program.wait()


class Run:
    """A Kelvo that records, with a data directory of its own."""

    def __init__(self, name, way, virtual=False, environment=None):
        self.out = OUT / name
        (self.out / "data").mkdir(parents=True)
        self.go = self.out / "go"
        variables = dict(os.environ, HOME=str(self.out), XDG_CONFIG_HOME=str(self.out / "config"), XDG_DATA_HOME=str(self.out / "share"))
        variables.update(environment or {})
        self.program = start(KELVO, "--offscreen", *(["--virtual-time"] if virtual else []), "--data", self.out / "data", "--transcript",
                             self.out / "transcript.jsonl", "--script", SCRIPT, "--", way, self.go, env=variables, cwd=self.out)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        end(self.program)

    def stop_recording(self):
        self.go.touch()

    def end(self):
        pathlib.Path(f"{self.go}.end").touch()
        return self.program.wait(kLongest)


class Awake(dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        for kind in ("system", "session"):
            cls.start_bus(kind)

    # Not by the base class: its buses are daemons that nobody ends where the test is killed. Nor do these sockets leave a file.
    @classmethod
    def start_bus(cls, kind):
        address = f"kelvo-awake-{os.getpid()}-{kind}"
        configuration = OUT / f"{kind}.conf"
        configuration.write_text(BUS.format(kind=kind, address=address))
        daemon = start("dbus-daemon", "--nofork", "--nopidfile", "--print-address=1", f"--config-file={configuration}", stdout=subprocess.PIPE, text=True)
        cls.addClassCleanup(daemon.stdout.close)
        cls.addClassCleanup(end, daemon)
        os.environ[f"DBUS_{kind.upper()}_BUS_ADDRESS"] = daemon.stdout.readline().strip()

    def serve(self, name, path, interface, is_system):
        """A stand-in of a service, for one test."""
        server = start(sys.executable, "-m", "dbusmock", *(["--system"] if is_system else []), name, path, interface, stdout=subprocess.DEVNULL)
        self.addCleanup(end, server)
        self.wait_for_bus_object(name, path, is_system)
        return dbus.Interface(self.get_dbus(is_system).get_object(name, path), dbusmock.MOCK_IFACE)

    def setUp(self):
        self.login = self.serve(LOGIN, LOGIN_PATH, MANAGER, True)
        self.notes = self.serve(NOTES, NOTES_PATH, NOTES, False)
        self.login.AddMethod(MANAGER, "Inhibit", "ssss", "h", INHIBIT)
        self.login.AddMethod(MANAGER, "Held", "", "i", HELD)
        self.notes.AddMethod(NOTES, "Notify", "susssasa{sv}i", "u", "ret = 7")

    def held(self):
        return int(self.login.proxy_object.Held(dbus_interface=MANAGER))

    def calls(self, service, name):
        return [list(arguments) for _, called, arguments in service.GetCalls() if called == name]

    def shown(self):
        """Summary and text of each note."""
        return [(call[3], call[4]) for call in self.calls(self.notes, "Notify")]

    def record(self, way):
        with Run(way, way) as run:
            eventually(self.held, 1, run.program)
            run.stop_recording()
            eventually(self.held, 0, run.program)
            self.assertEqual(run.end(), 0)
        asked = self.calls(self.login, "Inhibit")
        self.assertEqual(self.shown(), [], "it wasn't long")
        return asked

    def test_the_recorder(self):
        self.assertEqual(self.record("recorder"), [["sleep:idle", "Kelvo", "A recording is running", "block"]])

    def test_a_continuous_save(self):
        self.assertEqual(self.record("continuous"), [["sleep:idle", "Kelvo", "A recording is running", "block"]])

    def test_a_triggered_save(self):
        self.assertEqual(self.record("triggered"), [["sleep:idle", "Kelvo", "Frames are saved on triggers", "block"]])

    def test_a_trace(self):
        self.assertEqual(self.record("trace"), [["sleep:idle", "Kelvo", "Live video is traced", "block"]])

    def test_a_long_recording_is_told_once(self):
        with Run("long", "long", virtual=True) as run:
            eventually(self.held, 1, run.program)
            run.stop_recording()
            eventually(lambda: len(self.shown()), 1, run.program)
            eventually(self.held, 0, run.program)
            self.assertEqual(run.end(), 0)
        summary, text = self.shown()[0]
        self.assertEqual(summary, "Kelvo: a recording has ended")
        self.assertRegex(text, r"^It took (\d+ h )?\d+ min\.$")
        note = self.calls(self.notes, "Notify")[0]
        self.assertEqual([note[0], note[1], note[5], note[6], note[7]], ["Kelvo", 0, [], {}, -1])
        self.assertTrue(note[2].lower().endswith("kelvo"), note[2])

    def test_a_program_that_is_killed_holds_nothing(self):
        for number in (signal.SIGKILL, signal.SIGTERM):
            with self.subTest(number), Run(f"killed.{number.name}", "burst") as run:
                eventually(self.held, 1, run.program)
                run.program.send_signal(number)
                self.assertEqual(run.program.wait(kLongest), -number)
                deadline = time.monotonic() + kLongest
                while self.held() and time.monotonic() < deadline:
                    time.sleep(0.02)
                self.assertEqual(self.held(), 0)

    def test_a_refusal_changes_nothing(self):
        self.login.AddMethod(MANAGER, "Inhibit", "ssss", "h", REFUSE)
        with Run("refused", "recorder") as run:
            eventually(lambda: len(self.calls(self.login, "Inhibit")), 1, run.program)
            run.stop_recording()
            self.assertEqual(run.end(), 0)

    def test_without_a_bus_it_records(self):
        nowhere = {f"DBUS_{bus}_BUS_ADDRESS": f"unix:path={OUT}/nobody" for bus in ("SYSTEM", "SESSION")}
        with Run("none", "recorder", environment=nowhere) as run:
            run.stop_recording()
            self.assertEqual(run.end(), 0)
        self.assertEqual(self.calls(self.login, "Inhibit"), [])

    def test_a_bus_that_hangs_holds_nothing_up(self):
        address = f"kelvo-awake-{os.getpid()}-hangs"
        with socket.socket(socket.AF_UNIX) as listener:
            listener.bind(f"\0{address}")
            listener.listen()
            listener.settimeout(kLongest)
            hangs = {f"DBUS_{bus}_BUS_ADDRESS": f"unix:abstract={address}" for bus in ("SYSTEM", "SESSION")}
            with Run("hangs", "long", virtual=True, environment=hangs) as run:
                with listener.accept()[0]:  # it was asked, and gets no answer
                    eventually(pathlib.Path(f"{run.go}.long").exists, True, run.program)
                    begin = time.monotonic()
                    run.stop_recording()
                    with listener.accept()[0]:  # for the note
                        self.assertEqual(run.end(), 0)
                    self.assertLess(time.monotonic() - begin, kBusGivesUpAfter, "it has waited for the bus")


if __name__ == "__main__":
    shutil.rmtree(OUT, ignore_errors=True)
    OUT.mkdir(parents=True)
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]])
