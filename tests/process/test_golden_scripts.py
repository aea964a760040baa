# Runs every golden FDL as the script it is and checks what it builds against what the model is.
import types
import unittest

from agent import SOURCE, models

NINE = {1: 40, 2: 50, 3: 60, 4: 70, 5: 76, 6: 82, 7: 88, 8: 94, 9: 100}
FIVE = {1: 45, 2: 60, 3: 75, 4: 90, 5: 100}

# Families that differ in few columns: sensors by number as (overheat, critical, target).
S3000, S460, S1100 = [(75, 80, 65), (60, 65, 55)], [(60, 70, None)], [(100, 105, 85), (70, 75, 55)]
S2700, S500 = (85, 90, 75), [(100, 110, None), (75, 80, 55)]
ALT500, ALT750, ALT1100 = [21000, 22000, 23000], [18000, 20500, 23000], [20500, 23000]

# Model name ({}: airflow, F or R), capacity in W, sensors forward and where they differ reversed,
# maximum fan speed, alternate maximum speeds, cooling levels.
MODELS = {
    "DS3000": ("QLX-3K-AC-{}", 3000, [S3000], 12500, [], NINE),
    "DS3000TE": ("QLX-3KT-AC-{}", 3000, [S3000], 16500, [], NINE),
    "DS3000DC": ("QLX-3K-DC-{}", 3000, [S3000], 16500, [], NINE),
    "DS2700": ("QLX-2700-AC-{}", 2700, [[S2700, (45, 50, 40)]], 16500, [], NINE),
    "DS2700DC": ("QLX-2700-DC-{}", 2700, [[S2700, (60, 65, 55)], [S2700, (66, 71, 60)]],
                 16500, [], NINE),
    "DS2900": ("QLX-2900AC", 2900, [[(65, 70, None)] * 2], 12208, [], NINE),
    "Emerson760": ("QLX-760AC", 760, [[(90, 110, None)]], 16000, [], {}),
    "DS460TwoMicrocontroller": ("QLX-460AC-{}", 460, [S460], 18000, [], FIVE),
    "DS460ThreeMicrocontroller": ("QLX-460AC-{}", 460, [S460], 18000, [], FIVE),
    "DS460DC": ("QLX-460DC-{}", 460, [S460], 18000, [], FIVE),
    "DS500": ("QLX-500AC-{}", 500, [[(100, 105, None), *S500], [(85, 90, None), *S500]],
              21000, ALT500, FIVE),
    "DS500DC": ("QLX-500-DC-{}", 500, [[(100, 105, None), S500[0]], [(85, 90, None), S500[0]]],
                21000, ALT500, FIVE),
    "DS750": ("QLX-750AC-{}", 750, [S1100], 18000, ALT750, FIVE),
    "DS1100": ("QLX-1100AC-{}", 1100, [S1100], 20500, ALT1100, FIVE),
    "DS1100DC": ("QLX-1100-DC-{}", 1100, [S1100], 20500, ALT1100, FIVE),
    "DS1600": ("QLX-1600AC-{}", 1600, [[(65, 70, 55)]], 23000, [], FIVE),
}


class Part:
    """Anything a script makes: keeps what is assigned, and the parts made by number or name."""

    def __init__(self):
        self.parts = {}

    def __setattr__(self, name, value):
        if name == "physicalProperties":
            value = types.SimpleNamespace(values=value, alternateMaxRpm={},
                                          coolingLevelToFanSpeed={})
        object.__setattr__(self, name, value)

    def __getattr__(self, name):
        if not name.startswith("new"):
            raise AttributeError(name)
        return lambda key, *_: self.parts.setdefault((name, key), Part())


class GoldenScripts(unittest.TestCase):
    def test_build_the_model(self):
        scripts = {path.stem: path for path in SOURCE.glob("tests/golden/*")}
        self.assertEqual(set(scripts), models(), "golden texts and models")
        self.assertEqual(set(MODELS), {name.partition("_")[0] for name in models()},
                         "figures and models")
        for name, path in scripts.items():
            with self.subTest(name):
                base, _, reverse = name.partition("_")
                first, _, script = path.read_text(encoding="latin-1").partition("\n")
                self.assertEqual(first, "FruFactoryIds: PowerSupply")
                fru = Part()
                exec(compile(script, path.name, "exec"), {"fru": fru})
                self.check(fru, bool(reverse), *MODELS[base])

    def check(self, fru, reverse, model, capacity, sensors, speed, alternates, cooling):
        self.assertEqual((fru.modelName, fru.capacity), (model.format("FR"[reverse]), capacity))
        built = {key: (sensor.overheatThreshold, sensor.criticalThreshold,
                       getattr(sensor, "targetTemperature", None))
                 for (kind, key), sensor in fru.parts.items() if kind == "newTempSensor"}
        self.assertEqual(built, dict(enumerate(sensors[-1 if reverse else 0], 1)))
        self.assertEqual(fru.parts["newOutputVoltageSensor", "1"].expectedVoltage, 12)

        fan = fru.parts["newFan", 1].physicalProperties
        airflow = "backToFrontAirflow" if reverse else "frontToBackAirflow"
        self.assertEqual((fan.values[1], fan.values[4]), (speed, airflow))
        self.assertEqual(fan.alternateMaxRpm, dict(enumerate(alternates)))
        self.assertEqual(fan.coolingLevelToFanSpeed, cooling)
