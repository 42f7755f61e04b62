// Any bytes as a stream of payloads: each is refused with a code, or all of its events can be
// written again, and what was written reads as the same events and is written again as the same
// bytes.
//
// The first byte says where the payload stands in memory, from a multiple of 16 on, and by its high
// bit that the rest is a stream of two payloads; the two bytes behind it then are the length of the
// first.

#include <algorithm>
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
#include "lum/core/store/ExternalTypeRegistry.h"
#include "lum/core/utility/Collation.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/AnyLocalePool.h"
#include "tests/support/PayloadBytes.h"
#include "tests/support/PayloadWalk.h"

namespace {

using namespace lum::core;  // NOLINT(google-build-using-namespace): a target is a small program.
using lum::test::MakePayload;
using lum::test::PayloadBytes;
using lum::test::PayloadWalk;

bool SetUp() {
    lumfuzz::SilenceLog();
    SetCollatorPool(std::make_shared<lum::test::AnyLocalePool>());
    RegisterExternalType(
        61, L"kind", [](const ValueExternal&) { return std::vector<unsigned char>(); },
        [](const ArrayView<const unsigned char>&) { return nullptr; });
    return true;
}

// One payload that was read, written again.
struct Copied {
    std::string trace;
    std::vector<unsigned char> payload;
};

// Reads a stream and writes it again.
class Copier {
public:
    Copier(bool useBase128, bool useChecksums) : m_creator(useBase128, useChecksums) {}

    Copied Copy(const std::shared_ptr<PayloadBytes>& payload) {
        if (m_reader == nullptr) {
            m_reader = std::make_unique<BinaryProtocolReader>(payload);
        } else {
            m_reader->NextPayload(payload);
        }
        PayloadWalk walk(*m_reader, m_creator);
        std::string trace = walk.Walk();
        Copied copied{std::move(trace), m_creator.FinalizePayload()};
        m_canBeRead = m_canBeRead && !walk.MayHaveLostString(copied.payload);
        return copied;
    }

    bool CanBeRead() const { return m_canBeRead; }

private:
    std::unique_ptr<BinaryProtocolReader> m_reader;
    BinaryProtocolCreator m_creator;
    bool m_canBeRead = true;
};

std::vector<Copied> CopyAsFarAsItReads(Copier& copier,
                                       const std::vector<std::shared_ptr<PayloadBytes>>& payloads) {
    std::vector<Copied> copied;
    try {
        for (const std::shared_ptr<PayloadBytes>& payload : payloads) {
            copied.push_back(copier.Copy(payload));
        }
    } catch (const LumException&) {
        // Refusing bad bytes with a code is the job,
    } catch (const std::out_of_range&) {
        // and so is refusing a kind that nobody registered.
    }
    return copied;
}

void CheckStream(const std::vector<std::shared_ptr<PayloadBytes>>& payloads, bool useBase128,
                 bool useChecksums) {
    Copier copier(useBase128, useChecksums);
    const std::vector<Copied> copies = CopyAsFarAsItReads(copier, payloads);
    if (!copier.CanBeRead()) {
        return;
    }
    Copier again(useBase128, useChecksums);
    for (const Copied& copy : copies) {
        const Copied second = again.Copy(MakePayload(copy.payload));
        LUM_FUZZ_ASSERT(second.trace == copy.trace, "the events differ");
        LUM_FUZZ_ASSERT(second.payload == copy.payload, "the bytes differ");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool s_isSetUp = SetUp();
    static_cast<void>(s_isSetUp);
    if (size == 0) {
        return 0;
    }
    const std::size_t shift = data[0] & 0x0F;
    const bool isStream = (data[0] & 0x80) != 0 && size >= 3;
    const std::uint8_t* const rest = data + (isStream ? 3 : 1);
    const std::size_t restSize = size - (isStream ? 3 : 1);
    const std::size_t firstSize =
        isStream ? std::min(std::size_t{data[1]} + std::size_t{data[2]} * 256, restSize) : restSize;
    std::vector<std::shared_ptr<PayloadBytes>> payloads = {
        std::make_shared<PayloadBytes>(rest, firstSize, shift)};
    if (isStream) {
        payloads.push_back(
            std::make_shared<PayloadBytes>(rest + firstSize, restSize - firstSize, shift));
    }
    CheckStream(payloads, (data[0] & 0x10) != 0, (data[0] & 0x20) != 0);
    return 0;
}
