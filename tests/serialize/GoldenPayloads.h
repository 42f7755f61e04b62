#pragma once

#include <string>
#include <vector>

namespace lum::test {

/// The bytes of a payload that is told by hand, from the form and apart from the creator's own way
/// of laying one out. Flags: 1 for checksums, 2 for base-128. The data section is told in words:
///
///   #5     a count, or the number of a string
///   'a'    the number of the string "a", which joins the table at its first use
///   4: 8:  zeros up to a multiple of that many bytes
///   ;      the end of a container
///   02     all else are hexadecimal digits
std::vector<unsigned char> GoldenBytes(unsigned int flags, const std::string& data,
                                       std::vector<std::string> strings = {});

struct GoldenPayload {
    std::string name;
    unsigned int flags;
    std::string data;

    std::vector<unsigned char> GetBytes() const { return GoldenBytes(flags, data); }
};

/// Every kind of container and value, each with all four flags: "NamePlain", "NameWithSums",
/// "NameBase128" and "NameBase128WithSums". Some use the external kind that RegisterGoldenKind
/// registers and the collation "fold".
std::vector<GoldenPayload> GetGoldenPayloads();
void RegisterGoldenKind();

}  // namespace lum::test
