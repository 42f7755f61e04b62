#include "Literal.h"

#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "CellText.h"
#include "Columns.h"
#include "FileError.h"
#include "Options.h"
#include "Utf8.h"
#include "lum/core/store/Containers.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueFactory.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/TypeUtil.h"

namespace lumhost {
namespace {

using namespace lum::core;
using namespace lumengine;

bool IsQuoted(std::string_view text) {
    return text.size() >= 2 && text.front() == '\'' && text.back() == '\'';
}

// The text within the quotes; nothing where a quote or a backslash in it has no backslash before
// it, or a backslash stands before anything else.
std::optional<std::string> Unquote(std::string_view text) {
    text = text.substr(1, text.size() - 2);
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\'') {
            return std::nullopt;
        }
        if (text[i] != '\\') {
            plain += text[i];
            continue;
        }
        const char escaped = ++i < text.size() ? text[i] : '\0';
        if (escaped != '\\' && escaped != '\'' && escaped != 'n') {
            return std::nullopt;
        }
        plain += escaped == 'n' ? '\n' : escaped;
    }
    return plain;
}

std::optional<SpecialKind> FindSpecialKind(const std::string& text) {
    for (unsigned number = 1; number < kSpecialKindCount; ++number) {
        const auto kind = static_cast<SpecialKind>(number);
        if (SpecialKindToString(kind).toStdString() == text) {
            return kind;
        }
    }
    return std::nullopt;
}

LumDateTime ToDateTime(const DateTimeFields& fields) {
    return LumDateTime(fields.year, fields.month, fields.day, fields.hour, fields.minute,
                       fields.second, fields.fraction);
}

template <typename T>
SV MakeIfRead(const Type* type, const std::optional<T>& value) {
    return value ? MakeStoreValue<T>(type, *value) : nullptr;
}

// A number or a truth value; null where the text is none.
SV ReadPlain(const std::string& text, const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::Bool:
            return MakeIfRead(type, ReadBool(text));
        case StoreType::Int32:
            return MakeIfRead(type, ReadInt32(text));
        case StoreType::Int64:
            return MakeIfRead(type, ReadInt64(text));
        case StoreType::Real32:
            return MakeIfRead(type, ReadReal32(text));
        case StoreType::Real64:
            return MakeIfRead(type, ReadReal64(text));
        default:
            return nullptr;
    }
}

// What may stand in quotes; null where the text, now without them, is none.
SV ReadQuotable(const std::string& text, const Type* type) {
    switch (type->GetStoreType()) {
        case StoreType::String:
            return IsUtf8(text) ? MakeStoreValue<RIndirectString>(type, TStringCore::fromUtf8(text))
                                : nullptr;
        case StoreType::Date: {
            const auto fields = ReadDate(text);
            return fields ? MakeStoreValue<LumDateTime>(type, ToDateTime(*fields)) : nullptr;
        }
        case StoreType::DateTime: {
            const auto fields = ReadDateTime(text);
            return fields ? MakeStoreValue<LumDateTime>(type, ToDateTime(*fields)) : nullptr;
        }
        case StoreType::Color: {
            const auto color = ReadColor(text);
            return color ? factory::MakeColor(static_cast<int>(*color)) : nullptr;
        }
        default:
            return nullptr;
    }
}

SV TryReadLiteral(const std::string& text, const Type* type) {
    if (!IsQuoted(text)) {
        if (const auto kind = FindSpecialKind(text)) {
            return factory::MakeSpecial(type, *kind);
        }
        const SV value = ReadPlain(text, type);
        return value != nullptr ? value : ReadQuotable(text, type);
    }
    const std::optional<std::string> plain = Unquote(text);
    return plain ? ReadQuotable(*plain, type) : nullptr;
}

}  // namespace

SV ReadLiteral(const std::string& text, const Type* type) {
    SV value = TryReadLiteral(text, type);
    if (value == nullptr) {
        throw UsageError(QuoteForMessage(text) + " cannot be read as " +
                         StoreTypeToString(type->GetStoreType()).toStdString());
    }
    return value;
}

SV ReadSet(const std::vector<std::string>& texts, const Type* elementType) {
    return DispatchStorage(elementType->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        auto values = std::make_unique<SetContainer<T>>();
        auto specials = std::make_unique<std::unordered_set<SpecialKind>>();
        for (const std::string& text : texts) {
            const SV member = ReadLiteral(text, elementType);
            if (member->IsSpecial()) {
                specials->insert(member->GetSpecialKind());
            } else {
                values->insert(FetchStored<T>(member));
            }
        }
        return factory::MakeSet<T>(elementType, std::move(values),
                                   specials->empty() ? nullptr : std::move(specials));
    });
}

}  // namespace lumhost
