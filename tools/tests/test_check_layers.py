"""Plants small trees with one fault each; check_layers.py must name the fault's file and line."""

import os
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
import check_layers  # noqa: E402

LOW = "lumsys/public/lumsys/Low.h"
LOW_PRIVATE = "lumsys/main/Inner.h"
TYPE = "core/public/lum/core/types/Type.h"
STORE = "core/public/lum/core/store/Store.h"
STORE_PRIVATE = "core/main/store/Hidden.h"
SOURCE = "core/main/types/Type.cpp"

# Name, files, what the single message has to begin with (None: no complaint), implementers.
CASES = [
    ("DownwardsAndStandard",
     {LOW: "#include <vector>\n", TYPE: '#include "lumsys/Low.h"\n',
      SOURCE: '#include "lum/core/types/Type.h"\n#include <tbb/concurrent_vector.h>\n'},
     None, {}),
    ("UpwardHeader",
     {STORE: "", TYPE: '\n\n#  include "lum/core/store/Store.h"\n'},
     f"{TYPE}:3: types includes {STORE} of the higher component store", {}),
    ("UpwardFromThePlatformLayer",
     {TYPE: "", LOW: '#include "lum/core/types/Type.h"\n'}, f"{LOW}:1: lumsys includes", {}),
    ("UpwardSource",
     {STORE: "", SOURCE: '#include "lum/core/store/Store.h"\n'}, f"{SOURCE}:1: types includes", {}),
    ("UpwardSourceWithLeave",
     {STORE: "", SOURCE: '#include "lum/core/store/Store.h"\n'}, None,
     {SOURCE: ("store", "a test")}),
    ("LeaveEndsAtItsComponent",
     {"core/public/lum/core/serialize/Json.h": "",
      STORE: "",
      SOURCE: '#include "lum/core/store/Store.h"\n#include "lum/core/serialize/Json.h"\n'},
     f"{SOURCE}:2: types includes", {SOURCE: ("store", "a test")}),
    ("LeaveThatNobodyNeeds", {SOURCE: ""}, f"{SOURCE}:1: is listed in IMPLEMENTERS",
     {SOURCE: ("store", "a test")}),
    ("PublicReachesPrivate",
     {STORE_PRIVATE: "", STORE: '#include "core/main/store/Hidden.h"\n'},
     f"{STORE}:1: public header includes private", {}),
    ("PlatformPublicReachesPrivate",
     {LOW_PRIVATE: "", LOW: '#include "../../main/Inner.h"\n'},
     f"{LOW}:1: public header includes private", {}),
    ("HostReachesPrivate",
     {STORE_PRIVATE: "", "examples/host/Main.cpp": '#include "core/main/store/Hidden.h"\n'},
     "examples/host/Main.cpp:1: a host has no private headers", {}),
    ("ThirdPartyInPublic",
     {STORE: "// text\n#include <boost/variant.hpp>\n"}, f"{STORE}:2: third-party", {}),
    ("UnknownLibrary",
     {SOURCE: "#include <zlib/zlib.hpp>\n"}, f"{SOURCE}:1: <zlib/zlib.hpp> is no header", {}),
    ("OperatingSystemInPublic", {STORE: "#include <unistd.h>\n"}, f"{STORE}:1: <unistd.h>", {}),
    ("UpwardInAngles",
     {STORE: "", TYPE: "#include <lum/core/store/Store.h>\n"}, f"{TYPE}:1: types includes", {}),
    ("Misspelt", {STORE: '#include "lum/core/store/Stone.h"\n'},
     f'{STORE}:1: "lum/core/store/Stone.h" is no file', {}),
    ("NoComponent", {"core/main/extras/New.cpp": ""},
     "core/main/extras/New.cpp:1: belongs to no component", {}),
    ("CycleOfTwo",
     {STORE: '#include "lum/core/store/B.h"\n',
      "core/public/lum/core/store/B.h": '#pragma once\n#include "lum/core/store/Store.h"\n'},
     f"{STORE}:1: include cycle: core/public/lum/core/store/B.h -> {STORE} -> ", {}),
    ("CycleOfItself",
     {STORE: '#include "lum/core/store/Store.h"\n'}, f"{STORE}:1: include cycle", {}),
    ("DiamondIsNoCycle",
     {STORE: '#include "lum/core/types/Type.h"\n#include "lum/core/types/B.h"\n',
      TYPE: '#include "lum/core/types/C.h"\n',
      "core/public/lum/core/types/B.h": '#include "lum/core/types/C.h"\n',
      "core/public/lum/core/types/C.h": ""}, None, {}),
]


class CheckLayersTest(unittest.TestCase):
    def test_planted_trees(self):
        for name, files, expected, implementers in CASES:
            with self.subTest(name), tempfile.TemporaryDirectory() as root:
                for path, text in files.items():
                    whole = os.path.join(root, path)
                    os.makedirs(os.path.dirname(whole), exist_ok=True)
                    with open(whole, "w", encoding="utf-8") as file:
                        file.write(text)
                messages = check_layers.check(root, implementers=implementers)
                self.assertEqual(len(messages), 0 if expected is None else 1, messages)
                if expected is not None:
                    self.assertTrue(messages[0].startswith(expected), messages[0])


if __name__ == "__main__":
    unittest.main()
