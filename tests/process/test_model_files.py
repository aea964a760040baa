# Model files: the built-in models as files give the same bytes; what is refused; drafts.
import copy
import json
import os
import pathlib
import re
import shlex
import subprocess

from agent import SAMPLES, SOURCE, Case, faulty, models, run

AGENT = os.environ["PSU_AGENT"]
BARE = os.environ["PSU_BARE_PLUGIN"]
FILES = SAMPLES / "models"
SCHEMA = SOURCE / "agent" / "models" / "model-file.schema.json"
UNKNOWN = faulty("unrecognised")

FAMILY = {"keyField": "partNumber", "rule": "trimmedEquality",
          "fdl": ["FruFactoryIds: PowerSupply", "", "fru.api = 'DS3000'",
                  "fru.modelName = '${modelName}'", "fru.serialNum = '${serialNumber}'",
                  "fru.capacity = 3000", "f1 = fru.newFan( 1 )"],
          "models": [{"name": "DS3000PE9", "keys": ["DS3000PE-9"],
                      "columns": {"modelName": "QLX-3K9"}}]}

# Where a file is changed, to what, and the path of the value that both checks refuse.
MISFITS = (
    (["keyField"], "assetTag", "keyField"),
    (["rule"], "regex", "rule"),
    (["rules"], "prefix", "the document"),
    (["fdl"], [], "fdl"),
    (["fdl", 2], "fru.api = '\u00b5'", "fdl[2]"),
    (["fdl", 2], "fru.api = 'FILL_IN'", "fdl[2]"),
    (["models"], [], "models"),
    (["models", 0, "name"], "DS 3000", "models[0].name"),
    (["models", 0, "keys"], ["A", "A"], "models[0].keys[1]"),
    (["models", 0, "keys", 0], "", "models[0].keys[0]"),
    (["models", 0, "keys", 0], "\u20ac", "models[0].keys[0]"),
    (["models", 0, "columns", "modelName"], -1, "models[0].columns.modelName"),
    (["models", 0, "key"], "A", "models[0]"),
)


def changed(path, value):
    family = copy.deepcopy(FAMILY)
    target = family
    for step in path[:-1]:
        target = target[step]
    target[path[-1]] = value
    return family


def fits(*files):
    """Whether the files are what the schema says, by a validator that is not ours."""
    instances = (word for file in files for word in ("-i", file))
    done = subprocess.run(["/usr/bin/jsonschema", *instances, SCHEMA], capture_output=True,
                          check=False)
    return done.returncode == 0


class ModelFiles(Case):
    def file(self, name, content):
        path = self.folder / name
        path.write_text(json.dumps(content) if isinstance(content, dict) else content)
        return path

    def test_files_are_those_of_the_tables(self):
        made, kept = ({path.name: path.read_bytes() for path in folder.iterdir()}
                      for folder in (pathlib.Path(os.environ["PSU_BUILD_DIR"]) / "bin" / "models",
                                     FILES))
        self.assertEqual(made, kept)

    def test_files_give_the_same_bytes_as_the_built_in_models(self):
        images = sorted(SAMPLES.rglob("*.fru"))
        traced = ["--trace", "EmersonIpmiIdentifier=0,1", "--trace", "EmersonPmbusIdentifier=3,4"]
        for options in ([], ["--json"]):
            built_in = run("identify", *options, *traced, *images)
            as_files = run("identify", *options, *traced, "--library", BARE, "--models", FILES,
                           *images)
            self.assertEqual(as_files, built_in)
        self.assertIn("EmersonIpmiIdentifier/1 pName=DS460SDC-3  ; strlen pName=12", built_in[2])
        bare = run("identify", "--library", BARE, *images)
        self.assertEqual((bare[0], bare[1]), (4, b""))

    def test_prints_what_files_add(self):
        status, out, err = run("models", "--json", "--library", BARE, FILES)
        rows = [json.loads(line) for line in out.splitlines()]
        self.assertEqual((status, err, {row["name"] for row in rows}), (0, [], models()))
        self.assertEqual(
            rows[0], {"file": str(FILES / "ds1100.json"), "name": "DS1100",
                      "keyField": "productName", "rule": "trimmedEquality",
                      "keys": ["DS1100PED-3", "DS1100PED-3-401"], "refused": None})
        good, bad = self.file("good.json", FAMILY), self.file("bad.json", "[]")
        status, out, err = run("models", good, bad)
        self.assertEqual(status, 2)
        self.assertEqual(out.decode(),
                         f'{good}: DS3000PE9: partNumber trimmedEquality "DS3000PE-9"\n')
        self.assertEqual(err, [f"psu-agent: {bad}: the document: [] is no object"])
        # Against the built-in ones, each is taken already.
        self.assertEqual(run("models", FILES)[0], 2)
        self.refused(2, "a FILE or --models PATH is needed", "models")

    def test_a_file_is_used_or_refused_whole(self):
        good, bad = self.file("good.json", FAMILY), self.file("bad.json", changed(["rule"], 1))
        missing = self.folder / "missing.json"
        for path in (bad, missing):
            with self.subTest(path):
                status, out, err = run("identify", "--models", path, "--models", good, UNKNOWN)
                self.assertEqual((status, len(err)), (0, 1), err)
                self.assertIn(f"{path}: ", err[0])
                self.assertIn(b"fru.modelName = 'QLX-3K9'\n", out)
                self.refused(2, f"{path}: ", "identify", "--strict", "--models", path, "--models",
                             good, UNKNOWN)

    def test_by_name(self):
        path = self.file("good.json", FAMILY)
        types = json.loads(run("types", "--json", "--models", path)[1])
        added = next(one for one in types if one["shortName"] == "DS3000PE9")
        self.assertEqual([added[key] for key in ("name", "base", "isEntity", "constructorArgs")],
                         ["ModelFiles::DS3000PE9", "Ipmi::SupportedPowerSupplyDescriptorBase", True,
                          [{"name": "name", "type": "Kex::Name"}]])
        called = run("call", "--models", path, UNKNOWN,
                     "/Ipmi::SupportedPowerSupplyRegistry/DS3000PE9", "managed")
        self.assertEqual(called, (0, b"true\n", []))

    def test_explains(self):
        path = self.file("good.json", FAMILY)
        self.assertIn(f"manages it: {path}", " ".join(
            run("identify", "--explain", "--models", path, UNKNOWN)[1].decode().split()))
        near = self.file("near.json", changed(["models", 0, "keys", 0], "DS3000PE-8"))
        told = " ".join(run("identify", "--explain", "--models", near, UNKNOWN)[1].decode().split())
        self.assertIn('DS3000_Reversed does not know it; it would: part number "DS3000PE-3" '
                      "(another character)", told)
        self.assertIn('does not know it; it would: part number "DS3000PE-8" (another character): '
                      f"{near}", told)

    def test_schema_and_check_agree(self):
        self.assertTrue(fits(*sorted(FILES.iterdir()), self.file("good.json", FAMILY)))
        for path, value, where in MISFITS:
            with self.subTest(where, value=value):
                file = self.file("bad.json", changed(path, value))
                self.refused(2, f"{file}: {where}: ", "models", file)
                self.assertFalse(fits(file))

    def test_page_leads_to_an_identified_supply(self):
        page = (SOURCE / "docs" / "adding-a-model.md").read_text(encoding="utf-8")
        example = re.search(r"^ *```json\n(.*?)^ *```$", page, re.M | re.S)[1]
        (self.folder / "xs1200.json").write_text(example)
        steps = [line.strip() for line in page.split("## Building")[0].splitlines()]
        shown = {line[2:]: steps[at + 1] for at, line in enumerate(steps) if line.startswith("$ ")}
        for command, next_line in shown.items():
            program, *words = shlex.split(command)
            if "i2c:7" in words:
                continue
            program = {"psu-agent": AGENT, "tools/make-fru": SOURCE / "tools" / "make-fru"}[program]
            done = subprocess.run([program, *words], cwd=self.folder, capture_output=True,
                                  check=False, text=True)
            self.assertEqual((done.returncode, done.stderr), (0, ""), command)
            if next_line.startswith("xs1200.json"):
                self.assertEqual(done.stdout.splitlines()[0], next_line)
        self.assertIn("fru.modelName = 'QLX-1200AC-R'\n", done.stdout)
        self.assertTrue(fits(self.folder / "xs1200.json"))

    def test_draft(self):
        status, out, err = run("models", "--new", UNKNOWN)
        self.assertEqual((status, err), (0, []))
        draft = json.loads(out)
        self.assertEqual(draft["models"][0]["keys"], ["DS3000PE-9"])
        self.assertIn("fru.capacity = FILL_IN (3000 in DS3000)", draft["fdl"])
        path = self.file("draft.json", out.decode())
        self.refused(2, f'{path}: models[0].name: "FILL_IN" is still to be filled in', "models",
                     path)
        self.assertFalse(fits(path))

        draft["models"][0]["name"] = "DS3000PE9"
        columns = draft["models"][0]["columns"]
        columns.update(modelName="QLX-3K9", offOnPowerLoss="True", fanSuffix="F", fanSpeed=12500,
                       airflow="frontToBackAirflow")
        draft["fdl"] = [line.replace("FILL_IN (3000 in DS3000)", "3000")
                        .replace("FILL_IN ('Emerson3000' in DS3000)", "'Emerson3000'")
                        for line in draft["fdl"]]
        path.write_text(json.dumps(draft))
        status, out, err = run("identify", "--models", path, UNKNOWN)
        self.assertEqual((status, err), (0, []))
        self.assertIn(b"fru.modelName = 'QLX-3K9'\n", out)
        self.refused(1, "is identified as DS2900", "models", "--new", SAMPLES / "ds2900.fru")
        self.assertEqual(run("models", "--new", faulty("header-checksum"))[0], 4)
