#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "lum/core/Export.h"
#include "lum/core/serialize/JsonIterator.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/LumString.h"

namespace lum::core {

/// A value of a parsed JSON text, and all that the library's readers see of a text.
///
/// The accessors convert as the JSON parser does. A number is a Bool (other than zero), an integer
/// (cut towards zero) or a real; true and false are 1 and 0; null is false, zero or the empty
/// iteration. The reals take a string as well, as ReadReal64 of the typed readers does: "nan",
/// "+inf", "1.5".
///
/// Threads: an object is only read, so any number of threads may share it.
/// Ownership: an object keeps the whole parsed text alive. An iterable is part of its object and
///   good as long as that.
/// Errors: what the conversions refuse they refuse with exceptions derived from std::exception that
///   are the JSON parser's own: a string for a number, an integer out of range, anything but a
///   string for a string. CannotParseReal32 and CannotParseReal64 for a string that is no real;
///   JsonParseFailure for a number that the parser took only in part, as it does where the global
///   locale has another decimal point.
class LUM_CORE_API IJsonObject : public std::enable_shared_from_this<IJsonObject> {
public:
    /// The items in their order. Of an object that is no container there are none, of a dictionary
    /// the values.
    class LUM_CORE_API ArrayIterable {
    public:
        virtual ~ArrayIterable() = default;
        virtual JsonIterator<std::shared_ptr<IJsonObject>> begin() const = 0;
        virtual JsonIterator<std::shared_ptr<IJsonObject>> end() const = 0;
        /// How many items to make room for; 0 where that takes longer than O(1) to know.
        virtual std::size_t GetCount() const { return 0; }
    };

    /// The entries by the order of their keys' UTF-8 bytes, whatever their order in the text. Of
    /// entries with the same key the text's last is the only one.
    class LUM_CORE_API DictionaryIterable {
    public:
        using Entry = std::pair<TStringCore, std::shared_ptr<IJsonObject>>;

        virtual ~DictionaryIterable() = default;
        virtual JsonIterator<Entry> begin() const = 0;
        virtual JsonIterator<Entry> end() const = 0;
    };

    virtual ~IJsonObject() = default;

    /// Neither array nor dictionary. Null is a primitive.
    virtual bool IsPrimitive() const = 0;
    virtual bool IsArray() const = 0;
    virtual bool IsDictionary() const = 0;
    virtual bool IsString() const = 0;

    virtual bool AsBool() const = 0;
    /// The text, up to its first zero.
    virtual TStringCore AsString() const = 0;
    virtual int AsInt32() const = 0;
    virtual int64 AsInt64() const = 0;
    virtual float AsReal32() const = 0;
    virtual double AsReal64() const = 0;
    virtual const ArrayIterable& AsArray() const = 0;
    virtual const DictionaryIterable& AsDictionary() const = 0;
};

/// The root of a JSON text, which may be a scalar. Comments, a comma behind the last item, and
/// whatever follows the root are let pass, as are control characters in strings and leading zeros;
/// a lone surrogate in the text counts as U+FFFD.
///
/// Threads: any. Ownership: the caller's; nothing of `text` is kept.
/// Errors: JsonParseFailure for what is no JSON, a number beyond the range of Real64, or more than
///   1000 levels of nesting (256 in later releases of the parser).
/// Cost: linear in the text, but for the sorting of dictionaries. A thousand levels take half a
///   megabyte of stack.
LUM_CORE_API std::shared_ptr<IJsonObject> GetRootJsonObject(const TStringCore& text);

}  // namespace lum::core
