# psu-agent call: requests to attributes by path and name, and how refused ones are told.
from agent import DS2900, Case, run

IDENTIFIER = "/PowerSupply1/EmersonPmbus"
REGISTRY = "/Ipmi::SupportedPowerSupplyRegistry"


class Call(Case):
    def test_answers(self):
        slot = [f"/{kind}PowerSupply1" for kind in ("", "config/", "cell/", "status/")]
        for arguments, answer in (
                (["mfrId"], "EMERSON"), (["deviceId"], "0x58"), (["fruInfoCommand"], "176"),
                (["maxBytesReadInProcessCall"], "16"), (["serialNum"], "L1330K04287"),
                (["mfrIdSupported", "ARTESYN"], "true"), (["mfrIdSupported", "ACME"], "false"),
                (["mfrIdSupported", "--code", "1"], "2"),
                (["mfrIdSupported", "ACME", "--code", "0x80", "--arg", "true"], None),
                (["mfrId", "--code", "128", "--arg", ""], None),
                (["checkSupplyReadBuf", "--code", "129"], "<Hal::Buf>"),
                (["presentGpo"], "(null)"), (["idprom"], f"{IDENTIFIER}/idprom"),
                (["doResetIdentifier"], None), (["handleCheckSupplyRequest"], None),
                (["doSetupCheckSupplyRequest", "--arg", "false"], None),
                ([f"{REGISTRY}/DS2900", "managed"], "true"),
                ([f"{REGISTRY}/DS500", "doGenerateFdl", "--arg", f"{IDENTIFIER}/idprom"], None),
                (["/IdentifierFactory", "doAddIdentifierToDriver",
                  *(part for path in slot for part in ("--arg", path))], None)):
            with self.subTest(arguments):
                path = [] if arguments[0].startswith("/") else [IDENTIFIER]
                self.assertEqual(run("call", DS2900, *path, *arguments),
                                 (0, f"{answer}\n".encode() if answer else b"", []))

    def test_refusals(self):
        for arguments, status, told in (
                ([IDENTIFIER, "mfrId", "0"], 1, "mfrId: mfrId takes no index"),
                ([IDENTIFIER, "mfrIdSupported"], 1, "kex_index is missing"),
                ([IDENTIFIER, "deviceId", "--code", "128", "--arg", "1"], 1, "does not support this operation"),
                ([IDENTIFIER, "checkSupplyReadBuf", "--code", "128"], 1, "size is missing"),
                ([IDENTIFIER, "doSetupCheckSupplyRequest"], 1, "supported is missing, or has another type"),
                ([IDENTIFIER, "doSetupCheckSupplyRequest", "--arg", "yes"], 1, "'yes' to bool"),
                ([IDENTIFIER, "doResetIdentifier", "--arg", "1"], 1, "an argument more"),
                ([IDENTIFIER + "]x", "mfrId"], 1, "junk at column 26"),
                ([IDENTIFIER, "doResetIdentifier", "0"], 1, "doResetIdentifier takes no index"),
                ([IDENTIFIER, "kexDoZombieReactors", "--arg", "true"], 1, "declared only"),
                ([IDENTIFIER, "colour"], 1, "has no attribute colour"),
                (["/PowerSupply2", "name"], 1, "/PowerSupply2: is no path"),
                ([f"{REGISTRY}/DS500", "doGenerateFdl", "--arg", "(null)"], 1, "null ValidPtr"),
                ([IDENTIFIER], 2, "needs an ATTRIBUTE"),
                ([IDENTIFIER, "mfrId", "--arg", "1"], 2, "--arg: 1"),
                ([IDENTIFIER, "mfrId", "--code", "256"], 2, '--code: "256"')):
            self.refused(status, told, "call", DS2900, *arguments)
        self.assertEqual(run("call", "nowhere")[0], 1)

    def test_paths_can_be_called(self):
        status, out, _ = run("call", DS2900)
        paths = out.decode().splitlines()
        self.assertEqual((status, paths[0], len(paths)), (0, "/", len(set(paths))))
        self.assertLess({IDENTIFIER, f"{REGISTRY}/DS2900"}, set(paths))
        requests = ("pollForInsertion", "identifySupply", "checkSupply")
        self.assertEqual(
            [path.rpartition("/")[2] for path in paths if path.startswith(IDENTIFIER + "/")],
            [f"{request}Request" for request in requests] +
            ["commonAreaBuf", "productInfoHeaderBuf", "productInfoBuf", "idprom"] +
            [f"{request}{use}Buf" for use in ("Write", "Read") for request in requests])
        for path in paths:
            if not path.startswith(IDENTIFIER):
                self.assertEqual(run("call", DS2900, path, "name")[0], 0, path)

    def test_no_function_does_harm_without_a_supply(self):
        for function in ("doInitialize", "handlePollForInsertionRequest", "doResetIdentifier",
                         "handleIdentifySupplyRequest", "handleCheckSupplyRequest",
                         "handleConstructed"):
            with self.subTest(function):
                self.assertEqual(run("call", "--mfr-id", "ACME", DS2900, IDENTIFIER, function),
                                 (0, b"", []))
