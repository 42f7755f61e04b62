#include "MemoryMap.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "FileError.h"

namespace lumhost {
namespace {

class Descriptor {
public:
    // Not blocking, since a pipe without a writer would wait for one before it can be refused.
    explicit Descriptor(const std::string& path)
        : m_number(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    ~Descriptor() {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_number; }

private:
    int m_number;
};

void CheckSystem(bool isDone, const std::string& path) {
    if (!isDone) {
        throw FileError(path, 0, std::strerror(errno));
    }
}

}  // namespace

MemoryMap MemoryMap::Open(const std::string& path) {
    const Descriptor file(path);
    CheckSystem(file.Get() >= 0, path);
    struct stat status = {};
    CheckSystem(::fstat(file.Get(), &status) == 0, path);
    if (!S_ISREG(status.st_mode)) {
        throw FileError(path, 0, "this is not a regular file, and cannot be mapped");
    }
    if (status.st_size == 0) {
        throw FileError(path, 0, "the file is empty");
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const address = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.Get(), 0);
    CheckSystem(address != MAP_FAILED, path);
    return {address, size};
}

MemoryMap::~MemoryMap() {
    if (m_address != nullptr) {
        ::munmap(m_address, m_size);
    }
}

MemoryMap::MemoryMap(MemoryMap&& other) noexcept
    : m_address(std::exchange(other.m_address, nullptr)), m_size(std::exchange(other.m_size, 0)) {}

}  // namespace lumhost
