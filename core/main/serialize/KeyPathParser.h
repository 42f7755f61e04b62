#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "lum/core/store/KeyPath.h"
#include "lum/core/utility/LumException.h"
#include "lum/core/utility/RInternString.h"

namespace lum::core {

class Type;
class VtlScanner;
class VtlToken;

// Key paths and types over a running scanner, for texts in which they stand among other things; a
// text that is one path as a whole goes to KeyPath::ParseString, which describes the grammar. The
// readers take the tokens of what they read and leave what follows.
//
// Threads: those of the scanner. Errors: those of KeyPath::ParseString, with the whole text of the
// scanner as details. The scanner then stands somewhere within the path.

// Where the colon between a name and its type may stand. Among the arguments of a function, which
// nothing separates, a colon behind blanks begins a literal argument.
enum class TypeColon { AnywhereBehindName, TouchesName };

KeySegment ReadKeySegment(VtlScanner& scanner, TypeColon typeColon);

// The name that a token says: the number of an integer, the text of any other.
RInternString NameOf(const VtlToken& token);

// Paths of a program that were read before, by their text: what one statement writes others read,
// and a path that is known is neither looked up name by name nor made again.
//
// A text has two places, and drives out what stands in one of them. So a program that never repeats
// itself, or that was made to collide, costs no more than one look. Longer texts are not kept.
class KnownKeyPaths {
public:
    // Null where that text is not known; else good until the next Add.
    const KeyPath* TryGet(std::u16string_view text) const noexcept;
    void Add(std::u16string_view text, const KeyPath& path);

private:
    // The text stands here as well, since that of the program has long left the nearest caches.
    struct Entry {
        KeyPath path;
        std::size_t length = 0;
        std::array<char16_t, 48> text{};
    };

    static std::size_t PlaceOf(std::u16string_view text, std::size_t count) noexcept;
    Entry& Choose(std::u16string_view text) noexcept;
    void Grow();

    std::vector<Entry> m_entries;  // Places 2n and 2n + 1 belong together.
    std::size_t m_addCount = 0;
};

// Reads paths. Whoever reads many keeps one of these.
class KeyPathReader {
public:
    // Without `known` every path is made anew.
    explicit KeyPathReader(KnownKeyPaths* known = nullptr) : m_known(known) {}
    KeyPathReader(const KeyPathReader&) = delete;
    KeyPathReader& operator=(const KeyPathReader&) = delete;

    // A path, good until the next one is read.
    const KeyPath& Read(VtlScanner& scanner, TypeColon typeColon);
    // Paths one after the other, with blanks between them, while the next token can begin one;
    // there may be none.
    std::vector<KeyPath> ReadAll(VtlScanner& scanner);

private:
    const KeyPath& ReadAnew(VtlScanner& scanner, TypeColon typeColon);

    KnownKeyPaths* const m_known;
    KeyPath m_path;
    // Of the path and of the list that are being read: how long they get is not known before, and
    // what is given out should be no larger than it has to be.
    std::vector<KeySegment> m_segments;
    std::vector<KeyPath> m_paths;
};

// The type that the next tokens spell. Where they spell none, null: `error` is the code to fail
// with, and all the tokens still stand ahead.
// Errors: those of making the types; std::out_of_range for the name of an unknown external type.
// The scanner then stands somewhere within the type.
const Type* TryReadType(VtlScanner& scanner, LumError& error);

}  // namespace lum::core
