"""Dumps of FRU memories as they are in the world: cut, erased, longer, with a wrong length byte."""

import json
import struct
import subprocess
import sys

from agent import DS2900, SOURCE, Case, run

START, UNITS = 8, 9  # of the area in DS2900's image


def sum_zero(data):
    return bytes(data) + bytes([-sum(data) & 0xFF])


def header(board=0, product=1, multirecord=0):
    return sum_zero([1, 0, 0, board, product, multirecord, 0])


def changed(image, at, value):
    return image[:at] + bytes([value]) + image[at + 1:]


class Dumps(Case):
    def told(self, image, *options):
        """The JSON object that `identify` prints for the memory, and its lines on stderr."""
        file = self.folder / "dump.fru"
        file.write_bytes(image)
        _, out, err = run("identify", "--json", *options, file)
        return json.loads(out), err

    def test_files_that_end_early(self):
        image = DS2900.read_bytes()
        for length, verdict, hint in (
                (5, "invalidHeader", "5, inside the FRU common header (0 to 7)"),
                (8, "unsupportedVersion", "8, and the product info area begins at 8"),
                (9, "invalidChecksum", "9, inside the product info area, which begins at 8"),
                (40, "invalidChecksum", "40, inside the product info area (8 to 79)"),
                (79, "invalidChecksum", "79, inside the product info area (8 to 79)"),
                (80, "identified", None)):
            with self.subTest(length):
                supply, err = self.told(image[:length])
                self.assertEqual((supply["verdict"], supply["hint"]),
                                 (verdict, hint and f"the file ends at byte {hint}"))
                self.assertEqual(len(err), 0 if hint is None else 1)
                self.assertIn(hint or "", "".join(err))
        file = self.folder / "cut.fru"
        file.write_bytes(image[:40])
        self.assertIn(b"\n>> 0x4F  checksum              0xFF stored, 0xB1 computed\n",
                      run("identify", "--explain", file)[1])
        # Its checksum may be right all the same, by chance.
        end = START + UNITS * 8 - 4
        lucky = image[:end] + bytes([-sum(image[START:end]) - 3 * 0xFF & 0xFF])
        supply, err = self.told(lucky)
        self.assertEqual(supply["verdict"], "identified")
        self.assertIn("warning: the file ends at byte 77, inside the product info area", err[0])

    def test_memories_that_nobody_wrote_to(self):
        for byte, told in ((0xFF, "is erased"), (0, "is empty")):
            supply, _ = self.told(bytes([byte]) * 256)
            self.assertEqual(supply["verdict"], "invalidHeader")
            self.assertTrue(supply["reason"].endswith(f"the memory {told}"), supply["reason"])

    def test_a_wrong_checksum_names_the_right_one(self):
        image = DS2900.read_bytes()
        end = START + UNITS * 8 - 1
        for at, told in ((7, "header's checksum is 0x00, where 0xFE"),
                         (end, f"area's checksum is 0x00, where 0x{image[end]:02X}")):
            self.assertIn(told, self.told(changed(image, at, 0))[0]["reason"])

    def test_longer_dumps(self):
        image = DS2900.read_bytes().ljust(256, b"\xff")
        self.assertEqual(self.told(image + bytes(65536 - 256))[0], self.told(image)[0])

    def test_a_wrong_length_byte(self):
        image = DS2900.read_bytes()
        end = START + UNITS * 8 - 1
        hint = "with length 9 x 8 bytes the checksum is right"
        for length in (0, 1, 8, 10, 31, 200):
            wrong = changed(image, START + 1, length)
            # The maker's checksum is of the length byte as it should be, or as it is.
            for dump in (wrong, changed(wrong, end, image[end] - length + UNITS & 0xFF)):
                with self.subTest(length):
                    supply, err = self.told(dump)
                    self.assertEqual((supply["verdict"], supply["hint"], supply["fdl"]),
                                     ("invalidChecksum", hint, None))
                    self.assertIn(hint, err[0])
                    supply, err = self.told(dump, "--repair")
                    self.assertEqual((supply["verdict"], supply["suspect"]),
                                     ("identified", ["length"]))
                    self.assertEqual(supply["fdl"].encode(), run("identify", DS2900)[1])
                    self.assertIn(f"warning: repaired: {hint}", err[0])
        self.refused(4, hint, "identify", self.folder / "dump.fru")
        # Only where the length is all that is wrong, and texts can be read.
        unreadable = changed(changed(wrong, 20, 1), end, image[end] + image[20] - 1 & 0xFF)
        for dump in (changed(image, 20, image[20] ^ 1), changed(wrong, 20, image[20] ^ 1),
                     changed(wrong, START, 2), unreadable):
            self.assertIsNone(self.told(dump, "--repair")[0]["hint"])

    def test_the_next_area_suggests_a_length(self):
        made = subprocess.run(
            [sys.executable, "-B", SOURCE / "tools" / "make-fru", "--part-number", "DS2900-3",
             "--serial-number", "E1", "--area-size", "64", "--area-length", "4", "-o",
             self.folder / "made"], check=False, capture_output=True)
        self.assertEqual(made.returncode, 0, made.stderr)
        image = (self.folder / "made").read_bytes()
        self.assertIsNone(self.told(image)[0]["hint"])
        image = header(multirecord=9) + image[8:]
        self.assertEqual(self.told(image)[0]["hint"],
                         "with length 8 x 8 bytes the checksum is right")

    def test_explain_decodes_the_other_areas(self):
        board = bytes([1, 5, 25]) + (13675680).to_bytes(3, "little")
        board += b"".join(bytes([0xC0 | len(text)]) + text for text in
                          (b"MAKER", b"BOARD", b"SN42", b"PN7", b"", b"custom")) + b"\xc1"
        board = sum_zero(board.ljust(5 * 8 - 1, b"\0"))

        def record(kind, data, last=False):
            head = [kind, 2 | (0x80 if last else 0), len(data), -sum(data) & 0xFF]
            return sum_zero(head) + data

        records = record(0, struct.pack(
            "<HHBBHHHHBBBBHBHB", 0x1000 | 2900, 3200, 35, 5, 9000, 14000, 18000, 26400, 47, 63, 12,
            0b1110, 3000, 0, 2900, 0))
        records += record(1, struct.pack("<BhhhHHH", 0x81, -1200, -50, 50, 120, 0, 25000))
        records += record(0xD0, b"abc", last=True)
        area = DS2900.read_bytes()[8:80]
        image = (header(board=10, multirecord=15) + area + board + records).ljust(256, b"\xff")
        file = self.folder / "whole.fru"
        file.write_bytes(image)
        status, out, _ = run("identify", "--explain", file)
        text = out.decode("ascii")
        self.assertEqual(status, 0)
        self.assertEqual([line for line in text.splitlines() if len(line) > 80], [])
        for heading, offsets, rows in (
                ("Board info area", "50 51 52 53 57 5D 63 68 6C 6D 77", ('2022-01-01', '"MAKER"', '"BOARD"', '"SN42"', '"PN7"',
                                     'custom field          8-bit     6 bytes  "custom"')),
                ("Multirecord: power supply information",
                 "7A 7D 7F 81 82 83 85 87 89 8B 8C 8D 8F 92 94 8E 8E 8E 8E 7B",
                 ("capacity              2900 W", "peak power            3200 VA",
                  "inrush current        35 A", "inrush interval       5 ms",
                  "input 1, least        90 V", "input 1, most         140 V",
                  "input 2, least        180 V", "input 2, most         264 V",
                  "frequency, least      47 Hz", "frequency, most       63 Hz",
                  "dropout tolerance     12 ms", "peak capacity         3000 W",
                  "combined output       2900 W", "tachometer threshold  0 rotations/s",
                  "hot swap              yes", "autoswitch            yes",
                  "corrects power factor yes", "predictive failure    no")),
                ("Multirecord: DC output", "97 9A 9B 9D 9F A1 A3 A5 9A 98",
                 ("output number         1", "nominal voltage       -12 V",
                  "greatest deviation -  -0.5 V", "greatest deviation +  0.5 V",
                  "ripple and noise      120 mV", "least current         0 mA",
                  "greatest current      25000 mA", "standby               yes")),
                ("Multirecord: type 0xD0", "A9 AA", ("3 bytes",))):
            part = text.partition(f"\n{heading}\n")[2].partition("\n\n")[0]
            for row in rows:
                self.assertIn(row, part, heading)
            self.assertEqual([row.split()[0] for row in part.splitlines()],
                             ["0x" + offset for offset in offsets.split()], heading)
        self.assertNotIn(">>", text)
        # Wherever it is cut there is an explanation.
        for cut in (9, 81, 90, 119, 121, 130, 150, 166, 170, len(image)):
            file.write_bytes(image[:cut])
            self.assertEqual(run("identify", "--explain", file)[0], 4 if cut < 80 else 0, cut)
