#include "FileError.h"

#include "lum/core/utility/LumException.h"

namespace lumhost {
namespace {

std::string Compose(const std::string& file, unsigned long long line, unsigned long long column,
                    const std::string& text) {
    std::string place = file;
    if (line != 0) {
        place += ":" + std::to_string(line);
        place += column != 0 ? ":" + std::to_string(column) : "";
    }
    return place + ": " + text;
}

bool IsControl(char byte) {
    const auto code = static_cast<unsigned char>(byte);
    return code < 0x20 || code == 0x7F;
}

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

FileError::FileError(const std::string& file, unsigned long long line, unsigned long long column,
                     const std::string& text)
    : std::runtime_error(Compose(file, line, column, text)), m_file(file), m_line(line) {}

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
        quoted += IsControl(byte) ? '?' : byte;
    }
    quoted += shown < text.size() ? "...\"" : "\"";
    return quoted;
}

std::string MessageOf(const lum::core::LumException& error) {
    // The details stand on a line of their own, behind a message that may end with a blank.
    std::string text = error.what();
    text.erase(text.find_last_not_of(' ') + 1);
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', end)) {
        text.replace(end, 1, end > 0 && text[end - 1] == ' ' ? "" : " ");
    }
    for (char& byte : text) {
        byte = IsControl(byte) ? '?' : byte;
    }
    return text + " (error " + std::to_string(static_cast<int>(error.GetError())) + ")";
}

}  // namespace lumhost
