// Any bytes as a payload with a store: it is refused with a code, or all of the store can be read
// to the last element, and written and read again as the same.
//
// The first byte says where the payload stands in memory, from a multiple of 16 on, and by bits 4
// and 5 how it is written again.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fuzz/FuzzAssert.h"
#include "fuzz/QuietLog.h"
#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/ExactText.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/StoreTouch.h"

namespace {

using namespace lum::core;  // NOLINT(google-build-using-namespace): a target is a small program.
using lum::test::ExactText;
using lum::test::PayloadBytes;

// A host value: the bytes that it was made of.
class BytesValue final : public ValueExternal {
public:
    explicit BytesValue(std::vector<unsigned char> bytes)
        : ValueExternal(TStringCore(L"bytes")), m_bytes(std::move(bytes)) {}
    std::unique_ptr<StoreValue> Clone() const override {
        return std::make_unique<BytesValue>(*this);
    }
    const std::vector<unsigned char>& GetBytes() const { return m_bytes; }

private:
    std::vector<unsigned char> m_bytes;
};

bool SetUp() {
    lumfuzz::SilenceLog();
    SetCollatorPool(std::make_shared<lum::test::FoldingCollatorPool>());
    RegisterExternalType(
        62, L"bytes",
        [](const ValueExternal& value) {
            return dynamic_cast<const BytesValue&>(value).GetBytes();
        },
        [](const ArrayView<const unsigned char>& bytes) {
            return std::make_shared<BytesValue>(
                std::vector<unsigned char>(bytes.begin(), bytes.end()));
        });
    return true;
}

// Null where the payload is refused, which is the job.
std::shared_ptr<IDataStore> Read(std::shared_ptr<ISharedArrayBuffer> payload) {
    try {
        BinaryProtocolReader reader(std::move(payload));
        return StoreValueParser::MakeDataStore(reader);
    } catch (const LumException&) {
    } catch (const std::out_of_range&) {  // A kind of values that nobody registered.
    }
    return nullptr;
}

// Empty where there is no payload for the store: placeholders may lack values, rows a room for
// kinds, and a lonely empty string is lost.
std::vector<unsigned char> Write(const IDataStore& store, bool useBase128, bool useChecksums) {
    BinaryProtocolCreator creator(useBase128, useChecksums);
    try {
        SerializeDataStore(creator, store);
    } catch (const LumException& e) {
        LUM_FUZZ_ASSERT(e.GetError() == LumError::NullSerializedValue ||
                            e.GetError() == LumError::CollectionArraySpecials,
                        "refused for no known reason");
        return {};
    }
    std::vector<unsigned char> bytes = creator.FinalizePayload();
    const bool bringsStrings = bytes[useBase128 ? 12 : 16] != 0;
    return bringsStrings || store.GetValue(KeyPath())->GetCount() == 0
               ? bytes
               : std::vector<unsigned char>();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    if (size == 0) {
        return 0;
    }
    const std::shared_ptr<IDataStore> store =
        Read(std::make_shared<PayloadBytes>(data + 1, size - 1, data[0] & 0x0F));
    if (store == nullptr) {
        return 0;
    }
    const SV root = store->GetValue(KeyPath());
    lum::test::StoreTouch().Touch(root);
    const std::vector<unsigned char> bytes =
        Write(*store, (data[0] & 0x10) != 0, (data[0] & 0x20) != 0);
    if (!bytes.empty()) {
        const std::shared_ptr<IDataStore> again = Read(lum::test::MakePayload(bytes));
        LUM_FUZZ_ASSERT(again != nullptr, ExactText(root));
        LUM_FUZZ_ASSERT(ExactText(again->GetValue(KeyPath())) == ExactText(root), ExactText(root));
    }
    return 0;
}
