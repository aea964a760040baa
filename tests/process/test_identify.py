# psu-agent identify: what it prints where, its exit status, and how it takes bad input.
import json
import os
import pathlib

from agent import DS2900, SAMPLES, Case, faulty, run


class Output(Case):
    def test_prints_each_fdl_in_order(self):
        models = ["ds2900", "ds500dc", "ds2900", "emerson760"]
        alone = {model: run("identify", SAMPLES / f"{model}.fru")[1] for model in models}
        status, out, err = run("identify", *(SAMPLES / f"{model}.fru" for model in models))
        self.assertEqual((status, out, err), (0, b"".join(alone[model] for model in models), []))
        self.assertEqual(run("identify", "-", stdin=DS2900.read_bytes()), (0, alone["ds2900"], []))

    def test_json(self):
        status, out, err = run("identify", "--json", "--mfr-id", "EMERSON\u00e9", DS2900,
                               faulty("area-version"))
        identified, other = map(json.loads, out.splitlines())
        self.assertEqual((status, len(err)), (4, 1))
        self.assertEqual(list(identified)[:3], ["source", "slot", "verdict"])
        self.assertEqual(list(identified.values())[:-1], [
            str(DS2900), "PowerSupply1", "identified", None, None, "EMERSON", "DS2900", "EMERSON   ",
            "2900W AC POWER SUPPLY", "DS2900-3-001", "R03", "L1330K04287", False, [],
            # MFR_ID, header, area header, 70 more bytes of the area in chunks of 16, check
            1 + 1 + 1 + 5 + 1])
        self.assertEqual(list(other.values())[1:], [
            "PowerSupply2", "unsupportedVersion",
            "the product info area has format version 2, not 1", None, "EMERSON", None, None, None, None,
            None, None, False, [], 4, None])

    def test_suspect_fields_are_warned_of(self):
        for name, field in (("quote", "manufacturerName"), ("backslash", "manufacturerName"),
                            ("newline", "serialNumber"), ("nul", "serialNumber")):
            with self.subTest(name):
                status, out, err = run("identify", "--json", faulty(name))
                self.assertEqual((status, json.loads(out)["suspect"], len(err)), (0, [field], 1))
                self.assertIn(f"{name}.fru: warning: {field}", err[0])
                self.assertEqual(run("identify", "--json", "--quiet", faulty(name)), (0, out, []))
        self.assertEqual(len(run("--quiet", "identify", faulty("nul"), "none.fru")[2]), 1)

    def test_explain_marks_the_line_that_failed(self):
        # A start and a length that one byte wide wrap to 0.
        start, length = (self.folder / name for name in ("start", "length"))
        image = bytearray(DS2900.read_bytes())
        start.write_bytes(image[:4] + bytes([0x20]) + image[5:7] + bytes(
            [(image[7] + image[4] - 0x20) & 0xff]) + image[8:])
        length.write_bytes(image[:9] + bytes([0x20]) + image[10:])
        for arguments, marked in (
                ([DS2900], []),
                ([start], ["0x04", "product info area", "at 0x100 (wraps to 0x00)"]),
                ([length], ["0x09", "length", "32 x 8 bytes (wraps to 0x00)"]),
                (["--mfr-id", "ACME", DS2900], ["ACME"]),
                ([faulty("header-checksum")], ["0x07", "stored"]),
                ([faulty("no-product-area")], ["0x04", "product info area", "none"]),
                ([faulty("area-version")], ["0x08", "format version", "2"]),
                ([faulty("area-checksum")], ["checksum", "stored", "computed"]),
                ([faulty("area-length-zero")], ["0x09", "length", "0"]),
                ([faulty("unrecognised")], ["none of the"])):
            with self.subTest(arguments):
                _, out, _ = run("identify", "--explain", *arguments)
                title, *lines = out.decode("ascii").splitlines()
                self.assertEqual(title, str(arguments[-1]))
                self.assertEqual([line for line in lines if len(line) > 80], [])
                faults = [line for line in lines if line.startswith(">> ")]
                self.assertEqual(len(faults), 1 if marked else 0, faults)
                for part in marked:
                    self.assertIn(part, faults[0])

    def test_explain_shows_bytes_and_fields(self):
        out = run("identify", "--explain", SAMPLES / "ds3000te.fru")[1].decode("ascii")
        for part in ("07 45 4D 45 52 53 4F 4E", "wrote 01 80", "at 0x80", '"DS3000TE-3-001\\x09"',
                     "\nVerdict\n   identified\n",
                     'custom field          8-bit     6 bytes  "REV-05"', "0x82 stored, 0x82 comp",
                     "DS3000TE                            manages it"):
            self.assertIn(part, out)


class ExitStatus(Case):
    def test_precedence(self):
        bad = faulty("unrecognised")
        for arguments, status, lines in (
                ([bad, DS2900], 4, ["unrecognised"]),
                (["nowhere", bad], 1, ["nowhere: cannot open: No such file", "unrecognised"]),
                (["nowhere", bad, "-", "-"], 2, ["standard input"]),
                (["--wait", "3", "--mfr-id", "ACME", DS2900], 4, ["ACME"])):
            with self.subTest(arguments):
                got, out, err = run("identify", *arguments)
                self.assertEqual((got, len(err)), (status, len(lines)), err)
                self.assertEqual(out != b"", status != 2 and DS2900 in arguments[:2])
                for told, line in zip(lines, err):
                    self.assertIn(told, line)

    def test_bad_command_lines(self):
        for arguments, told in (
                (["identify", "--mfr-id", "", DS2900], "--mfr-id"),
                (["identify", "--mfr-id", "X" * 33, DS2900], "X" * 33),
                (["identify", "--wait", "soon\n", DS2900], "soon\\x0A"),
                (["identify", "--json", "--explain", DS2900], "--explain"),
                (["--trace", "X", "identify", DS2900], '--trace: "X"'),
                (["--trace", "X=1,32", "identify", DS2900], "X=1,32"),
                (["--trace", "=1", "identify", DS2900], "=1")):
            self.refused(2, told, *arguments)

    def test_bad_files(self):
        plugin = pathlib.Path(os.environ["PSU_PLUGIN"])
        host = plugin.with_name("libpowersupplyhost.so")
        empty, long, elf, text = (self.folder / name for name in ("empty", "long", "elf", "text"))
        empty.write_bytes(b"")
        long.write_bytes(bytes(65537))
        elf.write_bytes(plugin.read_bytes()[:4096])
        text.write_bytes(b"no library")
        for arguments, told in (
                ([empty], "empty: is empty"), ([long], "at most 65536"),
                ([self.folder], "is no regular file"), (["/dev/zero"], "is no regular file"),
                (["-"], "standard input"),
                (["--library", "nowhere", DS2900], "nowhere: cannot open"),
                (["--library", empty, DS2900], "not an ELF library"),
                (["--library", text, DS2900], "not an ELF library"),
                (["--library", elf, DS2900], "elf: "),
                (["--library", host, DS2900], "no section .kex.type")):
            self.refused(1, told, "identify", *arguments)

    def test_a_plug_in_that_throws_while_it_is_loaded(self):
        plugin = os.environ["PSU_THROWING_PLUGIN"]
        for thrown, told in (("text", "a text"), ("framework", "out of range"),
                             ("number", "an exception that has no text")):
            os.environ["PSU_THROWN"] = thrown
            self.refused(1, f"{plugin}: cannot be loaded: {told}", "--library", plugin, "identify",
                         DS2900)

    def test_full_output(self):
        with open("/dev/full", "wb") as full:
            self.assertEqual(run("identify", DS2900, stdout=full)[0], 1)
