"""Recordings and calibration sets put together by the pages on formats alone, for tests of what reads them."""
import struct

COLUMNS, ROWS = 3, 2
PIXELS = COLUMNS * ROWS


def polynomial(data):
    """CRC-32C as the remainder of a division, bit by bit."""
    rest = 0xFFFFFFFF
    for byte in data:
        rest ^= byte
        for _ in range(8):
            rest = rest >> 1 ^ (0x82F63B78 if rest & 1 else 0)
    return rest ^ 0xFFFFFFFF


def pixels(number):
    """The frame of that number by the board: 10 times the number, and the place."""
    return struct.pack(f"<{PIXELS}h", *(10 * number + i for i in range(PIXELS)))


def sequence(numbers, frame=pixels, size=(ROWS, COLUMNS)):
    """frame: the bytes of that number's frame; size: rows and columns."""
    head = bytearray(512)
    for place, kind, value in [(0, "<H", 0xFFFF), (2, "<h", size[1]), (4, "<h", size[0]), (6, "<h", 2), (40, "<h", 8), (42, "<I", len(numbers)),
                               (144, "<h", 80)]:
        struct.pack_into(kind, head, place, value)
    frames = [struct.pack("<30siif38x", b"Sat Nov 21 12:04:01.123 2026\n", place, number, 1.5) + frame(number) for place, number in enumerate(numbers)]
    return bytes(head) + b"".join(frames)


def sealed(*fields):
    record = struct.pack("<qqqf8I", *fields)
    return record + struct.pack("<I", polynomial(record))


def journal(numbers, text=b"Camera=made by hand\n", frame=pixels, size=(ROWS, COLUMNS), clock=lambda n: 1000 * n, utc=lambda n: 2000 * n):
    """Closed, complete; numbers that are left out were lost by the board. clock and utc: the times of a number, ns."""
    head = bytearray(128)
    struct.pack_into("<8s7I", head, 0, b"KVFRAMES", 1, 128, 64, 2 * size[0] * size[1], size[1], size[0], len(text))
    head[64:64 + len(text)] = text
    struct.pack_into("<I", head, 60, polynomial(head))
    records = [sealed(n, clock(n), utc(n), 1.5, 0, missing, 0, 0, 0, 0, 0, polynomial(frame(n)))
               for n, missing in zip(numbers, [0] + [b - a - 1 for a, b in zip(numbers, numbers[1:])])]
    return bytes(head) + b"".join(records) + sealed(len(numbers), 0, 0, 0, 128, 0, 0, 0, 0, 1, 0, 0)


DECOM = [5, 4, 3, 3, 1, 0]  # the image stands on its head, and detector 3 answers for 2 too
OFFSETS = [7, 3, 0, -5, 11, 2]
GAINS = [0.5, 2.0, 1.0, 0.75, 1.25, -1.5]


def calibration_set(directory, name="warm", decom=DECOM, offsets=OFFSETS, gains=GAINS):
    """NAME.cal with two sources and its lists."""
    (directory / f"{name}.cal").write_text(f"[Calibration]\nCalType=2\nDecomFile={name}.dcm\nGainFile={name}.gai\nOffsetFile={name}.off\n"
                                           "IntensityCold=3000\nIntensityHot=9000\nTemperatureCold=20.0\nTemperatureHot=25.0\n")
    (directory / f"{name}.dcm").write_bytes(struct.pack(f"<{len(decom)}I", *decom))
    (directory / f"{name}.off").write_bytes(struct.pack(f"<{len(offsets)}h", *offsets))
    (directory / f"{name}.gai").write_bytes(struct.pack(f"<{len(gains)}f", *gains))


def corrected(number):
    """What that set makes of a frame: (count - offset) / gain, cut to a whole number, of which 16 bits are kept."""
    counts = struct.unpack(f"<{PIXELS}h", pixels(number))
    return struct.pack(f"<{PIXELS}H", *(int((counts[d] - OFFSETS[d]) / GAINS[d]) & 0xFFFF for d in DECOM))
