#include "lum/core/serialize/StringBytes.h"

#include <string>

namespace lum::core {

std::vector<unsigned char> EncodeStringAsBytes(const TStringCore& text) {
    const std::string bytes = text.toStdString();
    return {bytes.begin(), bytes.end()};
}

TStringCore DecodeBytesAsString(const ArrayView<const unsigned char>& bytes) {
    return TStringCore::fromUtf8(reinterpret_cast<const char*>(bytes.GetData()), bytes.GetSize());
}

}  // namespace lum::core
