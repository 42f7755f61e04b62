// Any bytes as a file to dump: the dump takes memory in proportion to them, names a fault inside of
// them, and finds none in a payload that reads as a store.
//
// The first byte is not part of the file, so that inputs of the target of values serve here, too.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <vector>

#include "PayloadBuffers.h"
#include "PayloadDump.h"
#include "fuzz/FuzzAssert.h"
#include "fuzz/QuietLog.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/FoldingCollatorPool.h"

namespace {

using namespace lum::core;  // NOLINT(google-build-using-namespace): a target is a small program.

bool SetUp() {
    lumfuzz::SilenceLog();
    SetCollatorPool(std::make_shared<lum::test::FoldingCollatorPool>());
    return true;
}

bool IsStore(const std::shared_ptr<ISharedArrayBuffer>& payload) {
    try {
        BinaryProtocolReader reader(payload);
        return StoreValueParser::MakeDataStore(reader) != nullptr;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isStarted = SetUp();
    constexpr std::size_t kLongestLine = 512;
    if (size == 0 || !isStarted) {
        return 0;
    }
    const auto payload =
        std::make_shared<lumhost::VectorBuffer>(std::vector<unsigned char>(data + 1, data + size));
    const lumhost::PayloadDump dump = lumhost::DumpPayload(payload);
    LUM_FUZZ_ASSERT(dump.text.size() <= kLongestLine * (size + 8), "a dump of many lines a byte");
    LUM_FUZZ_ASSERT(!dump.fault || dump.fault->position <= size - 1, "a fault behind the end");
    LUM_FUZZ_ASSERT(!dump.fault || !IsStore(payload),
                    "a store with a fault: " + dump.fault->reason);
    return 0;
}
