// Comma-separated text: the reader agrees with a slow and obvious one on every text, rows or the
// line of the first fault, however its buffer cuts the text; and what was read, written as text
// and read again, is the same.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/FuzzAssert.h"
#include "tests/host/CsvText.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace lumhost::test;
    if (size == 0) {
        return 0;
    }
    // The first byte chooses where the buffer cuts the text.
    const std::size_t bufferBytes = data[0];
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);

    const Reading reading = ReadCsv(text, bufferBytes);
    LUM_FUZZ_ASSERT(reading == CsvModel(text).Read(), "the reader and the model differ");
    if (reading.faultLine == 0) {
        const Reading again = ReadCsv(WriteCsv(reading.rows, "\r\n"), bufferBytes);
        LUM_FUZZ_ASSERT(reading == again, "written and read again, the rows differ");
    }
    return 0;
}
