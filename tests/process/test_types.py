# psu-agent types: every type of the plug-in with its schema, in the order of registration.
import json
import unittest

from agent import run

NAME = [{"name": "name", "type": "Kex::Name"}]
KEYS = ["name", "shortName", "base", "isEntity", "hasGenericIfSupport", "constructorArgs",
        "attributes"]
ATTRIBUTE_KEYS = ["name", "id", "kind", "type", "keyType", "args", "introspectionFlag", "flags",
                  "own"]


class Types(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.status, out, cls.errors = run("types", "--json")
        cls.types = json.loads(out)

    def test_one_of_each_kind(self):
        self.assertEqual((self.status, self.errors), (0, []))
        for one, name, base, is_entity in (
                (self.types[0], "Emerson::IpmiIdentifier::DS3000",
                 "Ipmi::SupportedPowerSupplyDescriptorBase", True),
                (self.types[-2], "Emerson::PmbusIdentifier::Identifier", "Ipmi::IdentifierBase",
                 False),
                (self.types[-1], "Emerson::PmbusIdentifier::IdentifierFactory",
                 "PowerSupplyDetector::IdentifierFactoryBase", True)):
            with self.subTest(name):
                self.assertEqual(list(one), KEYS)
                self.assertEqual([one[key] for key in KEYS[:5]],
                                 [name, name.rpartition(":")[2], base, is_entity, True])
                self.assertEqual(one["constructorArgs"] == NAME, is_entity)
                self.assertFalse(one["attributes"][0]["own"])

    def test_attributes_of_each_kind(self):
        given, sized = ([{"name": "idpromContents", "type": "Ipmi::IdpromContents"}],
                            [{"name": "size", "type": "U32"}])
        domain = "isIndependentDomainAttr_"
        for at, *expected in (
                (0, "doGenerateFdl", 0x102, "function", "void", None, given, "isFunction_",
                 [0x20001, 0x400]),
                (-2, "fruInfoAddr", 0x20b, "value", "U64", None, [], "none", [0x220007, 0x400]),
                (-2, "mfrIdSupported", 0x20f, "collection", "bool", "Kex::String8", [], domain,
                 [0x1a20103, 0x400]),
                (-2, "checkSupplyReadBuf", 0x215, "instantiating", "Hal::Buf", None, sized,
                 domain, [0x8220103, 0x10000400])):
            with self.subTest(expected[0]):
                entries = {entry["name"]: entry for entry in self.types[at]["attributes"]}
                self.assertEqual(list(entries[expected[0]].items()),
                                 list(zip(ATTRIBUTE_KEYS, [*expected, True])))

    def test_listing_names_all_that_json_does(self):
        listing = run("types")[1].decode()
        for one in self.types:
            self.assertIn("\n" + one["name"] + "(", listing)
        self.assertIn("0x20f collection    mfrIdSupported[Kex::String8] : bool\n", listing)
        self.assertIn("doSetupCheckSupplyRequest(bool supported) : void\n", listing)


if __name__ == "__main__":
    unittest.main()
