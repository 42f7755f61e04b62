#include "lum/core/serialize/BinaryValuePacker.h"

#include <bit>

#include "core/main/serialize/BinaryBufferCreator.h"

namespace lum::core {

BinaryValuePacker::BinaryValuePacker() : m_buffer(std::make_unique<BinaryBufferCreator>()) {}
BinaryValuePacker::BinaryValuePacker(lumsize_t initialSize)
    : m_buffer(std::make_unique<BinaryBufferCreator>(initialSize)) {}
BinaryValuePacker::BinaryValuePacker(BinaryValuePacker&& other) noexcept = default;
BinaryValuePacker& BinaryValuePacker::operator=(BinaryValuePacker&& other) noexcept = default;
BinaryValuePacker::~BinaryValuePacker() = default;

void BinaryValuePacker::Append(float value) {
    m_buffer->Append(value);
}

void BinaryValuePacker::SetReal32AtByteIndex(lumsize_t byteIndex, float value) {
    m_buffer->SetValueAt(byteIndex, std::bit_cast<unsigned int>(value));
}

std::vector<unsigned char> BinaryValuePacker::GetBytes() const {
    return {m_buffer->GetBuffer().begin(), m_buffer->GetBuffer().end()};
}

}  // namespace lum::core
