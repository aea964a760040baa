# Every sample image is what its list says, and is recognised as the right model with the right FDL.
import json
import subprocess
import sys
import unittest

from agent import SAMPLES, SOURCE, Case, models, run

ENTRIES = json.loads((SAMPLES / "fru.json").read_text(encoding="utf-8"))
FDL_FIELDS = {"fru.mfgName": "manufacturer", "fru.hardwareRev": "product-version",
              "fru.serialNum": "serial-number"}


def make_fru(*arguments):
    return subprocess.run([sys.executable, "-B", SOURCE / "tools" / "make-fru", *arguments],
                          capture_output=True, check=False)


def identify(entries):
    """The objects that psu-agent prints for the entries' images, and its exit status."""
    status, out, _ = run("identify", "--json", *(SAMPLES / entry["file"] for entry in entries))
    return [json.loads(line) for line in out.splitlines()], status


def expected_fdl(entry):
    """The golden FDL of the entry's type, made from the first image of the type, with the fields
    of this image."""
    golden = SOURCE / "tests" / "golden" / f"{entry['descriptor']}.fdl"
    fdl = golden.read_bytes().decode("latin-1")
    first = next(one for one in ENTRIES if one.get("descriptor") == entry["descriptor"])
    for label, name in FDL_FIELDS.items():
        stored, _, _ = entry["image"][name].partition("\0")
        fdl = fdl.replace(f"{label} = '{first['image'][name]}'\n", f"{label} = '{stored}'\n")
    return fdl


class Models(Case):
    def test_every_model_has_a_sample(self):
        sampled = {entry["descriptor"] for entry in ENTRIES if "descriptor" in entry}
        self.assertEqual(sampled, models(), "models sampled, and models")

    def test_images_are_those_of_the_list(self):
        done = make_fru("--all", SAMPLES / "fru.json", "-o", self.folder)
        self.assertEqual(done.returncode, 0, done.stderr)
        made, kept = ({path.relative_to(root): path.read_bytes() for path in root.rglob("*.fru")}
                      for root in (self.folder, SAMPLES))
        self.assertEqual(set(made), set(kept))
        self.assertEqual([str(name) for name in made if made[name] != kept[name]], [])

    def test_identified(self):
        entries = [entry for entry in ENTRIES if "descriptor" in entry]
        supplies, status = identify(entries)
        self.assertEqual(status, 0)
        for entry, supply in zip(entries, supplies, strict=True):
            with self.subTest(entry["file"]):
                self.assertEqual([supply[key] for key in ("verdict", "descriptor", "fdl")],
                                 ["identified", entry["descriptor"], expected_fdl(entry)])

    def test_not_identified(self):
        entries = [entry for entry in ENTRIES if "verdict" in entry]
        supplies, status = identify(entries)
        self.assertEqual([(supply["verdict"], supply["descriptor"]) for supply in supplies],
                         [(entry["verdict"], None) for entry in entries])
        self.assertEqual(status, 4)


class MakeFru(unittest.TestCase):
    def test_encodings(self):
        # "IPMI" packs to 29 DC A6 (example of the storage definition); digits: high nibble first.
        done = make_fru("--manufacturer=IPMI", "--encoding=manufacturer=6-bit",
                        "--product-name=12-.3", "--encoding=product-name=bcd-plus")
        self.assertEqual(done.stdout[11:19].hex(), "8329dca6" + "4312bc3a")
        area = done.stdout[8:]
        self.assertEqual((sum(done.stdout[:8]) % 256, sum(area) % 256, len(area)),
                         (0, 0, 8 * area[1]))

    def test_refusals_name_the_option_and_the_value(self):
        for arguments, told in (
                (["--part-number=ds", "--encoding=part-number=6-bit"], "--part-number: 'ds'"),
                (["--serial-number=A"], "--serial-number: 'A'"),
                (["--serial-number=" + "9" * 64], "takes 64 bytes"),
                (["--product-name=\u20ac1"], "--product-name: '\u20ac1'"),
                (["--encoding=colour=6-bit"], "'colour=6-bit'"),
                (["--offset=12"], "--offset: 12"),
                (["--offset=248"], "--offset: 248"),
                (["--total-size=300"], "--total-size: 300"),
                (["--area-version=256"], "'256'")):
            with self.subTest(arguments):
                done = make_fru(*arguments)
                self.assertEqual((done.returncode, done.stdout), (2, b""))
                self.assertIn(told, done.stderr.decode("utf-8"))
