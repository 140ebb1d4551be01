#!/usr/bin/env python3
"""The whole program with a camera on the loopback: Aravis's own fake camera, in a process of its own.

  network_camera_test.py KELVO DEFAULTS SCRIPT OUT     DEFAULTS: the shipped settings; OUT: where the run's files stay
"""
import fcntl
import pathlib
import re
import shutil
import subprocess
import sys
import time

KELVO, DEFAULTS, SCRIPT, OUT = (pathlib.Path(argument).resolve() for argument in sys.argv[1:5])
ADDRESS = "127.0.0.1"
SECONDS = 240  # for all of it; a bound, no measure


def camera():
    return subprocess.Popen(["arv-fake-gv-camera-0.8", "-i", ADDRESS, "-s", "KV1"], stdout=subprocess.DEVNULL)


def switch_off(fake):
    fake.kill()
    fake.wait()


def data_directory():
    data = OUT / "data"
    shutil.rmtree(OUT, ignore_errors=True)
    shutil.copytree(DEFAULTS, data)
    (data / "platform.ini").write_text(f"[Ports]\nCOM2=genicam:{ADDRESS}\n\n[Board]\nBoard=genicam\n")
    cameras = (data / "camera.ini").read_text("latin-1")
    before, section, rest = re.split(r"(?m)^(\[Camera\.2\]\n)", cameras)
    for key, value in (("Htotal", 512), ("Vtotal", 512), ("Hactive", 512), ("Vactive", 512), ("Hroi", 512), ("Vroi", 512), ("cnfFile", "none")):
        rest = re.sub(rf"(?m)^{key}=.*$", f"{key}={value}", rest, count=1)
    (data / "camera.ini").write_text(before + section + rest, "latin-1")
    return data


def main():
    # There is one such address on a machine: who tests with it too waits for its turn.
    with open(f"/tmp/kelvo-fake-camera-{ADDRESS}.lock", "a") as turn:
        fcntl.flock(turn, fcntl.LOCK_EX)
        data = data_directory()
        fake = camera()
        kelvo = None
        try:
            time.sleep(1)
            kelvo = subprocess.Popen([KELVO, "--offscreen", "--data", data, "--script", SCRIPT, "--transcript", OUT / "transcript.jsonl"], cwd=OUT)
            end = time.monotonic() + SECONDS
            while kelvo.poll() is None and time.monotonic() < end:
                if (data / "off").exists():
                    (data / "off").unlink()
                    switch_off(fake)
                if (data / "on").exists():
                    (data / "on").unlink()
                    fake = camera()
                time.sleep(0.05)
        finally:
            if kelvo:
                kelvo.kill()
            switch_off(fake)
        return kelvo.wait()


sys.exit(main())
