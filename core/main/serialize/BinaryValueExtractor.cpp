#include "lum/core/serialize/BinaryValueExtractor.h"

#include "core/main/serialize/BinaryBufferReader.h"

namespace lum::core {

BinaryValueExtractor::BinaryValueExtractor(const ArrayView<const unsigned char>& bytes)
    : m_reader(std::make_unique<BinaryBufferReader>(bytes.GetData(),
                                                    LumSizeCastSafe(bytes.GetSize()))) {}
BinaryValueExtractor::BinaryValueExtractor(BinaryValueExtractor&& other) noexcept = default;
BinaryValueExtractor& BinaryValueExtractor::operator=(BinaryValueExtractor&& other) noexcept =
    default;
BinaryValueExtractor::~BinaryValueExtractor() = default;

float BinaryValueExtractor::ReadReal32() {
    return m_reader->Read<float>();
}

bool BinaryValueExtractor::IsEndOfBuffer() const {
    return m_reader->IsAtEnd();
}

}  // namespace lum::core
