# psu-agent types: what it tells of a type and of its attributes.
import json
import unittest

from agent import run

KEYS = ["name", "shortName", "base", "isEntity", "hasGenericIfSupport", "constructorArgs"]
ATTRIBUTE_KEYS = ["name", "id", "kind", "type", "keyType", "args", "introspectionFlag", "flags",
                  "own"]


class Types(unittest.TestCase):
    def test_json_and_listing(self):
        status, out, err = run("types", "--json")
        types = json.loads(out)
        self.assertEqual((status, err), (0, []))
        for at, argument, *expected in (
                (0, ["name", "Kex::Name"], "Emerson::IpmiIdentifier::DS3000", "DS3000",
                 "Ipmi::SupportedPowerSupplyDescriptorBase", True, True),
                (-2, ["notifier", "Kex::Clock"], "Emerson::PmbusIdentifier::Identifier",
                 "Identifier", "Ipmi::IdentifierBase", False, True)):
            with self.subTest(expected[0]):
                self.assertEqual(list(types[at]), [*KEYS, "attributes"])
                self.assertEqual([types[at][key] for key in KEYS[:-1]], expected)
                self.assertEqual(types[at]["constructorArgs"][0],
                                 dict(zip(("name", "type"), argument)))
        given, sized = ([{"name": "idpromContents", "type": "Ipmi::IdpromContents"}],
                        [{"name": "size", "type": "U32"}])
        domain = "isIndependentDomainAttr_"
        for at, *expected in (
                (0, "name", 0x1, "value", "Kex::Name", None, [], "none", [0x220001, 0x400], False),
                (0, "doGenerateFdl", 0x102, "function", "void", None, given, "isFunction_",
                 [0x20001, 0x400], True),
                (-2, "mfrIdSupported", 0x20f, "collection", "bool", "Kex::String8", [], domain,
                 [0x1a20103, 0x400], True),
                (-2, "checkSupplyReadBuf", 0x215, "instantiating", "Hal::Buf", None, sized,
                 domain, [0x8220103, 0x10000400], True)):
            with self.subTest(expected[0]):
                entries = {entry["name"]: entry for entry in types[at]["attributes"]}
                self.assertEqual(list(entries[expected[0]].items()),
                                 list(zip(ATTRIBUTE_KEYS, expected)))

        listing = run("types")[1].decode()
        self.assertEqual(listing.count("\nEmerson::"), len(types))
        self.assertIn("0x20f collection    mfrIdSupported[Kex::String8] : bool\n", listing)
        self.assertIn("doSetupCheckSupplyRequest(bool supported) : void\n", listing)
