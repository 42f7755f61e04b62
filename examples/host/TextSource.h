#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace lumhost {

/// The bytes of an input, read in order and as often as wanted.
///
/// Threads: one thread at a time.
/// Errors: FileError where the input cannot be read.
class TextSource {
public:
    explicit TextSource(std::string name) : m_name(std::move(name)) {}
    virtual ~TextSource() = default;
    TextSource(const TextSource&) = delete;
    TextSource& operator=(const TextSource&) = delete;

    /// Reads up to `size` bytes, fewer only at the end of the input; gives the number read.
    virtual std::size_t Read(char* buffer, std::size_t size) = 0;
    /// The next Read begins at the first byte again.
    virtual void Rewind() = 0;
    /// The bytes in all, for the display of progress; a file that grows can have more.
    virtual unsigned long long GetSize() const = 0;

    /// The name that messages show.
    const std::string& GetName() const { return m_name; }

private:
    std::string m_name;
};

/// An input that is held in memory.
class MemorySource : public TextSource {
public:
    MemorySource(std::string name, std::string text);

    std::size_t Read(char* buffer, std::size_t size) override;
    void Rewind() override { m_position = 0; }
    unsigned long long GetSize() const override { return m_text.size(); }

private:
    std::string m_text;
    std::size_t m_position = 0;
};

/// Opens the file at `path`. A regular file is read as it is needed, so that it takes no memory
/// here; anything else, such as a pipe, cannot be read twice and is taken into memory whole.
/// Errors: FileError where it cannot be opened or read.
std::unique_ptr<TextSource> OpenTextSource(const std::string& path);

}  // namespace lumhost
