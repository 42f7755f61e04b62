#include "TextSource.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "FileError.h"

namespace lumhost {
namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

FileHandle OpenFile(const std::string& path) {
    FileHandle file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) {
        throw FileError(path, 0, std::strerror(errno));
    }
    // Callers read in large pieces, so a buffer in between would only be one more copy.
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return file;
}

std::size_t ReadFile(std::FILE* file, const std::string& path, char* buffer, std::size_t size) {
    const std::size_t count = std::fread(buffer, 1, size, file);
    if (count < size && std::ferror(file) != 0) {
        throw FileError(path, 0, std::strerror(errno));
    }
    return count;
}

class FileSource : public TextSource {
public:
    FileSource(const std::string& path, unsigned long long size)
        : TextSource(path), m_file(OpenFile(path)), m_size(size) {}

    std::size_t Read(char* buffer, std::size_t size) override {
        return ReadFile(m_file.get(), GetName(), buffer, size);
    }
    void Rewind() override { std::rewind(m_file.get()); }
    unsigned long long GetSize() const override { return m_size; }

private:
    FileHandle m_file;
    unsigned long long m_size;
};

std::string ReadToEnd(const std::string& path) {
    const FileHandle file = OpenFile(path);
    constexpr std::size_t kPiece = std::size_t{1} << 16;
    std::string text;
    for (std::size_t length = 0;;) {
        text.resize(length + kPiece);
        const std::size_t count = ReadFile(file.get(), path, text.data() + length, kPiece);
        length += count;
        if (count < kPiece) {
            text.resize(length);
            return text;
        }
    }
}

}  // namespace

MemorySource::MemorySource(std::string name, std::string text)
    : TextSource(std::move(name)), m_text(std::move(text)) {}

std::size_t MemorySource::Read(char* buffer, std::size_t size) {
    const std::size_t count = std::min(size, m_text.size() - m_position);
    if (count > 0) {
        std::memcpy(buffer, m_text.data() + m_position, count);
    }
    m_position += count;
    return count;
}

std::unique_ptr<TextSource> OpenTextSource(const std::string& path) {
    std::error_code ignored;  // What is wrong with the file is reported by opening it.
    if (std::filesystem::is_regular_file(path, ignored)) {
        const std::uintmax_t size = std::filesystem::file_size(path, ignored);
        return std::make_unique<FileSource>(path, ignored ? 0 : size);
    }
    return std::make_unique<MemorySource>(path, ReadToEnd(path));
}

}  // namespace lumhost
