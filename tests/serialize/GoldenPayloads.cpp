#include "tests/serialize/GoldenPayloads.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "lum/core/store/ExternalTypeRegistry.h"
#include "tests/support/PayloadBytes.h"

namespace lum::test {
namespace {

class Bytes {
public:
    explicit Bytes(unsigned int flags)
        : m_hasChecksums((flags & 1) != 0), m_isBase128((flags & 2) != 0) {}

    const std::vector<unsigned char>& Get() const { return m_bytes; }
    std::size_t GetSize() const { return m_bytes.size(); }

    void Append(const std::vector<unsigned char>& bytes) {
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
    }
    void AppendWord(std::size_t word) {
        for (int i = 0; i < 4; ++i) {
            m_bytes.push_back(static_cast<unsigned char>(word >> 8 * i));
        }
    }
    void PadTo(std::size_t alignment) {
        m_bytes.resize((m_bytes.size() + alignment - 1) / alignment * alignment);
    }
    void AppendCount(std::size_t count) {
        if (!m_isBase128) {
            PadTo(4);
            return AppendWord(count);
        }
        for (; count > 0x7F; count /= 0x80) {
            m_bytes.push_back(static_cast<unsigned char>(count % 0x80 + 0x80));
        }
        m_bytes.push_back(static_cast<unsigned char>(count));
    }

    void AppendData(const std::string& data, std::vector<std::string>& strings) {
        std::istringstream words(data);
        for (std::string word; words >> word;) {
            if (word[0] == '#') {
                AppendCount(std::stoul(word.substr(1)));
            } else if (word[0] == '\'') {
                const std::string text = word.substr(1, word.size() - 2);
                const auto found = std::find(strings.begin(), strings.end(), text);
                AppendCount(static_cast<std::size_t>(found - strings.begin()) + 1);
                if (found == strings.end()) {
                    strings.push_back(text);
                }
            } else if (word.back() == ':') {
                PadTo(std::stoul(word));
            } else if (word != ";") {
                Append(FromHex(word));
            } else if (m_hasChecksums) {
                PadTo(2);
                Append({0x0D, 0xF0});
            }
        }
    }

private:
    std::vector<unsigned char> m_bytes;
    bool m_hasChecksums;
    bool m_isBase128;
};

}  // namespace

std::vector<unsigned char> GoldenBytes(unsigned int flags, const std::string& data,
                                       std::vector<std::string> strings) {
    Bytes section(flags);
    section.AppendData(data, strings);
    Bytes offsets(flags);
    offsets.AppendWord(1);
    std::string text;
    for (const std::string& string : strings) {
        offsets.AppendWord(text.size());
        text += string;
    }
    Bytes bytes(flags);
    bytes.AppendWord(1);
    bytes.AppendWord(flags);
    bytes.AppendCount(1);
    bytes.Append({'/'});
    bytes.PadTo(4);
    const auto roundUp = [](std::size_t length) { return (length + 7) / 8 * 8; };
    const std::size_t headerEnd = roundUp(bytes.GetSize() + 20);
    const std::size_t textPosition = roundUp(headerEnd + offsets.GetSize());
    const std::size_t textEnd = roundUp(textPosition + text.size());
    const bool hasTable = !strings.empty();
    for (const std::size_t word : {headerEnd, offsets.GetSize(), textPosition, text.size()}) {
        bytes.AppendWord(hasTable ? word : 0);
    }
    bytes.AppendWord(hasTable ? textEnd : headerEnd);
    bytes.PadTo(8);
    if (hasTable) {
        bytes.Append(offsets.Get());
        bytes.PadTo(8);
        bytes.Append({text.begin(), text.end()});
        bytes.PadTo(8);
    }
    bytes.Append(section.Get());
    return bytes.Get();
}

void RegisterGoldenKind() {
    core::RegisterExternalType(
        61, L"kind", [](const core::ValueExternal&) { return std::vector<unsigned char>(); },
        [](const core::ArrayView<const unsigned char>&) { return nullptr; });
}

std::vector<GoldenPayload> GetGoldenPayloads() {
    const std::pair<std::string, std::string> contents[] = {
        {"Empty", "#0 ;"},
        {"OneInt", "#1 'a' 02 4: 05000000 ;"},
        {"SortedArray", "#1 'a' 0c02 29 #2 4: 01000000 07000000 #2 0001 ; ;"},
        {"Scalars",
         "#7 'b' 01 01 'l' 03 8: feffffffffffffff 'r' 84 09fe 4: 0000c03f 'n' 45 01 "
         "'d' 07 8: 0807060504030201 'c' 09 4: 3322117f 's' 06 'b' ;"},
        {"Nested", "#2 'm' 0f #1 'a' 02 4: 05000000 ; 'x' 8b 'kind' 02 #2 cafe ; ;"},
        {"Table", "#1 't' 10 #1 01 #1 'a' ; 01 #1 4: 01000000 ; 'a' 0c02 01 #1 4: 05000000 ; ; ;"},
        {"KeySet", "#1 'k' 0e06 01 02 #1 'x' 01 #1 01 00 ; ;"},
        {"TupleKeys", "#1 'k' 0e8a0100 0f 01 #1 06 #1 00 ; #0 ; ; ;"},
        {"Tuple", "#1 'p' 8a020100 0e #2 0001 #1 4: 07000000 ; ;"},
        {"Sets", "#2 'i' 0d03 0d #1 8: ffffffffffffffff #1 09 ; 'f' 0d86 'fold' 05 #0 ; ;"},
        {"Constants", "#2 'a' 0c06 04 #1000 'b' ; 'b' 0c07 0c #0 00 ; ;"},
        {"Composite",
         "#1 'a' 0c01 53 #2 0100 #2 0001 #2 4: 03000000 01000000 #2 4: 03000000 00000000 ; ;"},
        {"Arrays",
         "#3 'e' 0c03 01 #0 ; 'l' 0c05 01 #1 8: 000000000000f03f ; "
         "'p' 0c0c06 01 #1 01 #2 'p' '' ; ; ;"},
    };
    const char* const suffixes[] = {"Plain", "WithSums", "Base128", "Base128WithSums"};
    std::vector<GoldenPayload> payloads;
    for (const auto& [name, data] : contents) {
        for (unsigned int flags = 0; flags < 4; ++flags) {
            payloads.push_back({name + suffixes[flags], flags, data});
        }
    }
    return payloads;
}

}  // namespace lum::test
