#include "TextInput.h"

#include <cstddef>
#include <memory>

#include "FileError.h"
#include "TextSource.h"
#include "Utf8.h"

namespace lumhost {

lum::core::TStringCore ReadText(const std::string& path) {
    const std::unique_ptr<TextSource> source = OpenTextSource(path);
    std::string bytes;
    std::string buffer(1 << 16, '\0');
    while (const std::size_t count = source->Read(buffer.data(), buffer.size())) {
        bytes.append(buffer, 0, count);
    }
    if (!IsUtf8(bytes)) {
        throw FileError(path, 0, "the text is not UTF-8");
    }
    return lum::core::TStringCore::fromUtf8(bytes);
}

}  // namespace lumhost
