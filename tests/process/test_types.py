# psu-agent types: every type of the plug-in with its schema, in the order of registration.
import json
import unittest

from agent import run

NAME = [{"name": "name", "type": "Kex::Name"}]
KEYS = ["name", "shortName", "base", "isEntity", "hasGenericIfSupport", "constructorArgs",
        "attributes"]
ATTRIBUTE_KEYS = ["name", "id", "kind", "type", "keyType", "args", "introspectionFlag", "flags",
                  "own"]


def attribute(name, number, kind, value, flags, flag="isIndependentDomainAttr_", key=None, args=()):
    args = [{"name": argument, "type": of} for argument, of in args]
    return dict(zip(ATTRIBUTE_KEYS, (name, number, kind, value, key, args, flag, flags, True)))


class Types(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.status, out, cls.errors = run("types", "--json")
        cls.types = json.loads(out)
        cls.by_name = {one["shortName"]: one for one in cls.types}

    def test_one_of_each_kind(self):
        self.assertEqual((self.status, self.errors, len(self.types)), (0, [], 32))
        self.assertEqual([one["shortName"] for one in self.types[:3] + self.types[-3:]],
                         ["DS3000", "DS3000_Reversed", "DS3000TE", "DS1600_Reversed",
                          "Identifier", "IdentifierFactory"])
        for one, name, base, is_entity in (
                (self.types[11], "Emerson::IpmiIdentifier::Emerson760",
                 "Ipmi::SupportedPowerSupplyDescriptorBase", True),
                (self.types[30], "Emerson::PmbusIdentifier::Identifier", "Ipmi::IdentifierBase",
                 False),
                (self.types[31], "Emerson::PmbusIdentifier::IdentifierFactory",
                 "PowerSupplyDetector::IdentifierFactoryBase", True)):
            with self.subTest(name):
                self.assertEqual(list(one), KEYS)
                self.assertEqual((one["name"], one["base"], one["isEntity"],
                                  one["hasGenericIfSupport"]), (name, base, is_entity, True))
                self.assertEqual(one["constructorArgs"] == NAME, is_entity)
                self.assertEqual({tuple(entry) for entry in one["attributes"]},
                                 {tuple(ATTRIBUTE_KEYS)})

    def test_attributes_of_each_kind(self):
        for type_name, expected in (
                ("DS2900", attribute("doGenerateFdl", 0x102, "function", "void", [0x20001, 0x400],
                                     "isFunction_",
                                     args=[("idpromContents", "Ipmi::IdpromContents")])),
                ("Identifier", attribute("fruInfoAddr", 0x20b, "value", "U64", [0x220007, 0x400],
                                         "none")),
                ("Identifier", attribute("mfrIdSupported", 0x20f, "collection", "bool",
                                         [0x1a20103, 0x400], key="Kex::String8")),
                ("Identifier", attribute("checkSupplyReadBuf", 0x215, "instantiating", "Hal::Buf",
                                         [0x8220103, 0x10000400], args=[("size", "U32")]))):
            with self.subTest(expected["name"]):
                entries = {entry["name"]: entry for entry in self.by_name[type_name]["attributes"]}
                self.assertEqual(entries[expected["name"]], expected)
                self.assertFalse(next(iter(entries.values()))["own"])

    def test_listing_names_all_that_json_does(self):
        listing = run("types")[1].decode()
        for one in self.types:
            self.assertIn("\n" + one["name"] + "(", listing)
        self.assertIn("0x20f collection    mfrIdSupported[Kex::String8] : bool\n", listing)
        self.assertIn("doSetupCheckSupplyRequest(bool supported) : void\n", listing)


if __name__ == "__main__":
    unittest.main()
