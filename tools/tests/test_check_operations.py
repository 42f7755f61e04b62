"""check_operations.py must miss what is not on the page, and not ask for what is nobody's to call."""

import os
import subprocess
import sys
import tempfile
import unittest

TOOLS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, TOOLS)
import check_operations  # noqa: E402

HEADER = """#pragma once
namespace lum::core {
/// Not this(one).
LUM_CORE_API int Make(int size);
namespace detail {
int Hidden();
}  // namespace detail
class LUM_CORE_API Column final : public Base {
public:
    explicit Column(int size);
    [[nodiscard]] const int* GetData() const { return Find(1); }
    template <typename T>
    static std::shared_ptr<T> Share(T value);
protected:
    void Reset();
};
struct Plain {
    bool IsEmpty() const;
};
}  // namespace lum::core
"""


class CheckOperationsTest(unittest.TestCase):
    def run_tool(self, row):
        with tempfile.TemporaryDirectory() as root:
            for name, text in {"core/public/lum/core/Column.h": HEADER, "docs/operations.md": row,
                               "there.cpp": ""}.items():
                path = os.path.join(root, name)
                os.makedirs(os.path.dirname(path), exist_ok=True)
                with open(path, "w", encoding="utf-8") as file:
                    file.write(text)
            run = subprocess.run(
                [sys.executable, os.path.join(TOOLS, "check_operations.py"), "--root", root],
                text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return run.returncode, run.stdout

    def test_what_is_an_operation(self):
        self.assertEqual(check_operations.operations_of(HEADER),
                         ["Make", "GetData", "Share", "IsEmpty"])

    def test_whole_row(self):
        row = "| `lum/core/Column.h` | Make, GetData, Share, IsEmpty | `there.cpp` | `there.cpp` |"
        self.assertEqual(self.run_tool(row), (0, ""))

    def test_gaps(self):
        for row, complaint in {
            "": "has no row",
            "| `lum/core/Column.h` | Make, GetData, IsEmpty | `there.cpp` | x |": "not name Share",
            "| `lum/core/Column.h` | Make, GetData, Share, IsEmpty | `gone.cpp` | x |": "no gone",
            "| `lum/core/Gone.h` | Make | x | x |": "no such public header",
        }.items():
            code, output = self.run_tool(row)
            self.assertEqual(code, 1)
            self.assertIn(complaint, output)


if __name__ == "__main__":
    unittest.main()
