"""check_headers.py must refuse a header that leans on its includer, and pass one that stands."""

import os
import subprocess
import sys
import tempfile
import unittest

TOOL = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))),
                    "check_headers.py")
STANDING = "#pragma once\n#include <string>\ninline std::string f() { return {}; }\n"
LEANING = "#pragma once\ninline std::string g() { return {}; }\n"
WARNING = "#pragma once\ninline int h(long long wide) { return wide; }\n"


class CheckHeadersTest(unittest.TestCase):
    def run_tool(self, headers):
        with tempfile.TemporaryDirectory() as root:
            folder = os.path.join(root, "lumsys", "public", "lumsys")
            os.makedirs(folder)
            for name, text in headers.items():
                with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                    file.write(text)
            run = subprocess.run([sys.executable, TOOL, "--root", root], text=True,
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return run.returncode, run.stdout

    def test_standing_header_passes(self):
        self.assertEqual(self.run_tool({"Standing.h": STANDING}), (0, ""))

    def test_leaning_header_and_warning_are_named(self):
        code, output = self.run_tool(
            {"Standing.h": STANDING, "Leaning.h": LEANING, "Warning.h": WARNING})
        self.assertEqual(code, 1)
        self.assertEqual(len(output.splitlines()), 2, output)
        self.assertIn("Leaning.h:2:", output)
        self.assertIn("Warning.h:2:", output)


if __name__ == "__main__":
    unittest.main()
