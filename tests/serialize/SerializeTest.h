#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "lum/core/serialize/BinaryProtocolCreator.h"
#include "lum/core/serialize/BinaryProtocolReader.h"
#include "lum/core/serialize/StoreValueBinarySerializer.h"
#include "lum/core/serialize/StoreValueParser.h"
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/store/IDataStore.h"
#include "tests/serialize/GoldenPayloads.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/FoldingCollatorPool.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/RandomStores.h"

namespace lum::test {

/// What values and golden payloads need on their way out and in: the kinds of RegisterBytesKind and
/// of RegisterGoldenKind, and a pool that knows "fold".
class SerializeTest : public testing::Test {
protected:
    SerializeTest() {
        RegisterBytesKind();
        RegisterGoldenKind();
    }
    ~SerializeTest() override { core::ClearExternalTypes(); }

private:
    CollatorPoolGuard m_pool{std::make_shared<FoldingCollatorPool>()};
};

inline std::string Repeat(const std::string& text, std::size_t count) {
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i) {
        repeated += text;
    }
    return repeated;
}

/// A store as a payload of its own. Flags: 1 for checksums, 2 for base-128.
inline std::vector<unsigned char> WriteStore(const core::IDataStore& store,
                                             unsigned int flags = 2) {
    core::BinaryProtocolCreator creator((flags & 2) != 0, (flags & 1) != 0);
    core::SerializeDataStore(creator, store);
    return creator.FinalizePayload();
}

/// Of the payload at `shift` bytes behind a multiple of 16, whose data is used in place where it is
/// aligned, and else copied.
inline std::shared_ptr<core::IDataStore> ReadStore(const std::vector<unsigned char>& bytes,
                                                   std::size_t shift = 0) {
    core::BinaryProtocolReader reader(MakePayload(bytes, shift));
    return core::StoreValueParser::MakeDataStore(reader);
}

}  // namespace lum::test
