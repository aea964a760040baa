# The fields that psu-agent decodes are those that FreeIPMI's ipmi-fru does.
import json
import re
import subprocess
import sys

from agent import SAMPLES, SOURCE, Case, run

FIELDS = {"Manufacturer Name": "manufacturerName", "Name": "productName",
          "Part/Model Number": "partNumber", "Version": "productVersion",
          "Serial Number": "serialNumber"}
# BCD plus is left out: the two differ in which digit of a byte comes first.
IMAGES = (
    {"manufacturer": "IPMI", "product-name": "A_BC!12", "part-number": "AB", "serial-number": " Z",
     "product-version": "123", "encoding": [f"{name}=6-bit" for name in (
         "manufacturer", "product-name", "part-number", "product-version", "serial-number")]},
    {"serial-number": "00abCD7f", "encoding": "serial-number=binary", "manufacturer": "EMERSON"},
    {"manufacturer": "m" * 63, "serial-number": "s" * 63, "language": 0},
    {"product-name": "\u00e9\u00ff\t\u00a0 ", "part-number": "ab\0cd"},
    {"custom": ["c1", "c22"], "asset-tag": "tag", "file-id": "fid", "product-version": "V2"},
    {"area-size": 240, "serial-number": "S1"},
    {"offset": 64, "total-size": 256, "serial-number": "S1"},
)


def reference(image):
    """Name and text of each field that is not empty; binary ones with all bytes, others up to
    their NUL."""
    # Its exit status is 0 whatever it meets.
    told = subprocess.run(["ipmi-fru", f"--fru-file={image}"], capture_output=True, check=True)
    text = told.stdout.decode("latin-1")
    if "Error" in text:
        raise ValueError(text)
    for label, value in re.findall("^  FRU Product ([^:]*): (.*)$", text, re.MULTILINE):
        if label in FIELDS:
            if re.fullmatch("([0-9A-F]{2}h ?)+", value):
                value = bytes.fromhex(value.replace("h", "")).decode("latin-1")
            yield FIELDS[label], value


class FruDecoding(Case):
    def test_fields(self):
        entries = [{"file": f"{at}.fru", "image": image} for at, image in enumerate(IMAGES)]
        made = self.folder / "list.json"
        made.write_text(json.dumps(entries), encoding="utf-8")
        subprocess.run([sys.executable, "-B", SOURCE / "tools" / "make-fru", "--all", made,
                        "-o", self.folder], check=True, stderr=subprocess.DEVNULL)
        images = sorted(self.folder.glob("*.fru"))
        for entry in json.loads((SAMPLES / "fru.json").read_text(encoding="utf-8")):
            if not entry["file"].startswith("faulty/") and "bcd-plus" not in str(entry):
                images.append(SAMPLES / entry["file"])
        self.assertGreater(len(images), 30)
        supplies = run("identify", "--json", *images)[1].splitlines()
        for image, supply in zip(images, map(json.loads, supplies), strict=True):
            with self.subTest(image.name):
                expected = dict.fromkeys(FIELDS.values(), "") | dict(reference(image))
                decoded = {name: supply[name] for name in FIELDS.values()}
                for name, value in expected.items():
                    if "\0" not in value:
                        decoded[name] = decoded[name].partition("\0")[0]
                self.assertEqual(decoded, expected)
