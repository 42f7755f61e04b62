// Runs every file of a corpus through a fuzz target, without a fuzzing engine: the entry point that
// turns a target into an ordinary test. Each input stands in a block of just its size, so that
// AddressSanitizer sees a read past the end.
//
//   PROGRAM CORPUS_FOLDER

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

void Replay(const std::string& bytes) {
    const auto block = std::make_unique<std::uint8_t[]>(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        block[i] = static_cast<std::uint8_t>(bytes[i]);
    }
    LLVMFuzzerTestOneInput(block.get(), bytes.size());
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER\n", arguments[0]);
        return 2;
    }
    Replay("");
    std::size_t count = 0;
    std::string current;
    try {
        for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
            current = entry.path().string();
            std::ifstream file(current, std::ios::binary);
            Replay({std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
            ++count;
        }
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s: %s\n", current.c_str(), failure.what());
        return 1;
    }
    if (count == 0) {
        // A test of nothing would pass for ever.
        std::fprintf(stderr, "%s holds no input\n", arguments[1]);
        return 1;
    }
    std::printf("%zu inputs\n", count);
    return 0;
}
