#pragma once

#include <utility>

#include "lum/core/utility/LumString.h"

namespace lum::core {

class Type;

// Where the tag of a type is written to. Strings go through the string table of the payload.
class IBinaryProtocolTypeWriter {
public:
    virtual ~IBinaryProtocolTypeWriter() = default;
    virtual void AppendRaw(const TStringCore& text) = 0;
    virtual void AppendRaw(unsigned char value) = 0;
    virtual void AppendRaw(signed char value) = 0;
};

// Where the tag of a type is read from.
class IBinaryProtocolTypeReader {
public:
    virtual ~IBinaryProtocolTypeReader() = default;
    virtual signed char RawReadInt8() = 0;
    virtual unsigned char RawReadUInt8() = 0;
    // Good until the reader dies.
    virtual const TStringCore& RawReadString() = 0;
};

// Writes the tag of `type`: a byte with its store type plus 1 and two flags, then its parameters,
// then the tags of the types in it. Members of key maps and tables are not written.
// Errors: those of ExternalType::GetExternalTypeName.
void WriteTypeTag(IBinaryProtocolTypeWriter& writer, const Type& type, bool isSpecial);

// Reads a tag: the type, and whether the value behind it is a special.
// Errors: see BinaryProtocolReader::ReadKeyType.
std::pair<const Type*, bool> ReadTypeTag(IBinaryProtocolTypeReader& reader);

}  // namespace lum::core
