#pragma once

#include <memory>

#include "lum/core/Export.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// What the text of a JsonSerializer looks like: laid out in lines, or without a blank.
enum class JsonSerializerType : int { Readable = 0, Compact = 1 };

/// A push writer of JSON text: the caller announces keys, scalars, and the beginning and end of
/// containers, and the writer appends to one text, with separators and layout where they are due.
/// A document has one root item: a scalar, an array or a dictionary. A writer is made, driven and
/// read once; nothing resets it. The same calls give readable or compact text, by its type.
///
/// Threads: a writer belongs to one thread at a time.
/// Ownership: the writer owns its text. A writer that was moved from can only be destroyed or
///   assigned to.
/// Units: text is UTF-16 code units. Escaped are the quote, the backslash and units below 32; all
///   other units, surrogates too, stand as they are.
/// Errors: LumRuntimeException with the code named at the operation, reported; the text stays as it
///   was, and the writer can go on. But after EndArray or EndDictionary has failed, the writer is
///   good for nothing more: the container on top is gone and the text unfinished. Once nothing is
///   left to end, every call but Build fails with IllegalOperation. Text beyond 2^30 units fails
///   with std::length_error.
/// Cost: linear in the text; one small allocation a container.
class LUM_CORE_API JsonSerializer {
public:
    /// A writer of compact text.
    JsonSerializer();
    /// Errors: UnsupportedSerializerType for a number that no enumerator names.
    explicit JsonSerializer(JsonSerializerType type);
    JsonSerializer(JsonSerializer&& other) noexcept;
    JsonSerializer& operator=(JsonSerializer&& other) noexcept;
    ~JsonSerializer();

    /// The key of the next value of a dictionary.
    /// Errors: KeyNotSupported outside of any container; KeyInJsonArray; UnexpectedDictionaryKey
    /// where a value is due.
    void AppendKey(const TStringCore& key);
    /// A string, quoted and escaped.
    /// Errors: SecondRootItem; UnexpectedDictionaryValue where a key is due.
    void AppendString(const TStringCore& text);
    /// A scalar as it stands: a number, true, false. Nothing is checked or escaped.
    /// Errors: as above.
    void AppendUnquotedString(const TStringCore& text);

    /// Begins an array. In readable text `multiline` puts each item on a line of its own, else the
    /// array stays on one line; compact text has no lines.
    /// Errors: SecondRootItem; DictionaryKeyExpected where a key is due.
    void BeginArray(bool multiline);
    /// Errors: ArrayNotSupported where the innermost container is no array.
    void EndArray();
    /// Begins a dictionary. Errors: SecondRootItem; DictionaryKeyExpected where a key is due.
    void BeginDictionary();
    /// Ends a dictionary, also behind a key without a value.
    /// Errors: DictionaryNotSupported where the innermost container is no dictionary.
    void EndDictionary();

    /// The text so far, finished or not; good until the writer goes on or dies.
    const TStringCore& Build() const;

    /// The text without its escapes: a backslash with b, f, n, r or t becomes that control
    /// character, with any other unit that unit. So "\u0041" becomes "u0041": the numbered form is
    /// not read.
    /// Errors: JsonParseFailure where the text ends behind an open backslash.
    static TStringCore UnescapeFromJson(const TStringCore& text);

private:
    friend class JsonItemWriter;
    class Implementation;

    std::unique_ptr<Implementation> m_implementation;
};

}  // namespace lum::core
