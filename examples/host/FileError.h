#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace lum::core {
class LumException;
}

namespace lumhost {

/// A fault of an input file. what() is one line: "FILE:LINE: TEXT", with ":COLUMN" behind the line
/// where that is known, or "FILE: TEXT" where the fault is not at a line.
class FileError : public std::runtime_error {
public:
    /// `line` counts from 1; 0 stands for the file as a whole, and a column of 0 for the line.
    FileError(const std::string& file, unsigned long long line, const std::string& text)
        : FileError(file, line, 0, text) {}
    FileError(const std::string& file, unsigned long long line, unsigned long long column,
              const std::string& text);

    const std::string& GetFile() const { return m_file; }
    unsigned long long GetLine() const { return m_line; }

private:
    std::string m_file;
    unsigned long long m_line;
};

/// Text from a file as a message shows it: in double quotes, cut after some 40 bytes, and with a
/// question mark for each control character, so that a message stays one line and harmless to a
/// terminal.
std::string QuoteForMessage(std::string_view text);

/// The message of one of the library's exceptions on one line, with the number of its error.
std::string MessageOf(const lum::core::LumException& error);

}  // namespace lumhost
