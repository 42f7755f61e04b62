#include "FileError.h"

namespace lumhost {
namespace {

std::string Compose(const std::string& file, unsigned long long line, const std::string& text) {
    return line == 0 ? file + ": " + text : file + ":" + std::to_string(line) + ": " + text;
}

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

FileError::FileError(const std::string& file, unsigned long long line, const std::string& text)
    : std::runtime_error(Compose(file, line, text)), m_file(file), m_line(line) {}

std::string QuoteForMessage(std::string_view text) {
    constexpr std::size_t kShownBytes = 40;
    std::size_t shown = text.size();
    if (shown > kShownBytes) {
        shown = kShownBytes;
        // Not in the middle of a UTF-8 sequence, which has at most three continuing bytes.
        for (int step = 0; step < 3 && ContinuesCharacter(text[shown]); ++step) {
            --shown;
        }
    }
    std::string quoted = "\"";
    for (const char byte : text.substr(0, shown)) {
        const auto code = static_cast<unsigned char>(byte);
        quoted += code < 0x20 || code == 0x7F ? '?' : byte;
    }
    quoted += shown < text.size() ? "...\"" : "\"";
    return quoted;
}

}  // namespace lumhost
