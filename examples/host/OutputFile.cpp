#include "OutputFile.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "FileError.h"

namespace lumhost {
namespace {

// The file that a link leads to: it is that one which is replaced, not the link.
std::string Resolve(const std::string& path) {
    std::error_code error;
    const std::filesystem::path resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved.string();
}

}  // namespace

OutputFile::OutputFile(const std::string& path)
    : m_path(Resolve(path)),
      m_draftPath(m_path + "." + std::to_string(::getpid()) + ".part"),
      m_stream(m_draftPath, std::ios::binary | std::ios::trunc) {
    if (!m_stream) {
        throw FileError(path, 0, std::strerror(errno));
    }
}

OutputFile::~OutputFile() {
    if (!m_draftPath.empty()) {
        m_stream.close();
        std::remove(m_draftPath.c_str());
    }
}

void OutputFile::Publish() {
    m_stream.close();
    if (!m_stream) {
        throw FileError(m_path, 0, "the file cannot be written");
    }
    if (std::rename(m_draftPath.c_str(), m_path.c_str()) != 0) {
        throw FileError(m_path, 0, std::strerror(errno));
    }
    m_draftPath.clear();
}

}  // namespace lumhost
