#include "lum/core/serialize/VtlSerializer.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "core/main/serialize/KeyPathSerializer.h"
#include "core/main/serialize/KeyPathWriter.h"
#include "core/main/serialize/QuotedText.h"
#include "core/main/serialize/VtlScanner.h"
#include "core/main/serialize/VtlStatements.h"
#include "core/main/vtl/OperatorText.h"
#include "lum/core/Check.h"
#include "lum/core/serialize/FormatPrimitive.h"
#include "lum/core/store/StoreValue.h"

namespace lum::core {
namespace {

// Whether the scanner reads the whole text as one word that is no keyword.
bool IsWord(const TStringCore& text) {
    const VtlToken token = VtlCursor(text.view()).Scan();
    return token.Is(VtlTokenKind::Identifier) && token.GetStart() == 0 &&
           token.GetEnd() == text.length();
}

bool NeedsQuotes(const StoreValue& value, const TStringCore& text) {
    if (value.IsSpecial()) {
        return false;
    }
    switch (value.GetStoreType()) {
        case StoreType::String:
            return !IsWord(text);
        case StoreType::Date:
        case StoreType::DateTime:
        case StoreType::Color:
            return true;
        default:
            return false;
    }
}

void AppendLiteral(TStringCore& out, const StoreValue& value) {
    const TStringCore text = FormatPrimitive(value);
    out += u':';
    if (NeedsQuotes(value, text)) {
        AppendQuotedUntilZero(out, text);
    } else {
        out += text;
    }
}

// Appends ":" and the type. The text of a type is that which it has in a key segment, so one is
// written there and the name left behind.
void AppendTypeSpec(TStringCore& out, const Type* type, KeyPathWriter& keys) {
    static const RInternString s_name(L"x");
    TStringCore segment;
    AppendKeySegment(segment, KeySegment(s_name, type), /*includeType=*/true, /*fullForm=*/true,
                     keys.GetCache());
    out.append(segment.data() + 1, segment.length() - 1);
}

void AppendArgument(TStringCore& out, const ValueSpec& valuespec, KeyPathWriter& keys) {
    if (valuespec.IsKey()) {
        keys.Append(out, valuespec.GetKeyPath());
        return;
    }
    LUM_CHECK(IsPrimitiveStoreType(valuespec.GetValue()->GetStoreType()),
              LumError::OperatorTypeNotPrimitive);
    LUM_CHECK_NOT(valuespec.GetValue()->GetStoreType() == StoreType::External,
                  LumError::OperatorTypeExternal);
    AppendLiteral(out, *valuespec.GetValue());
    AppendTypeSpec(out, valuespec.GetValue()->GetType(), keys);
}

void AppendFunction(TStringCore& out, const FunctionSpec& function, KeyPathWriter& keys) {
    const TStringCore& name = function.GetName();
    if (IsWord(name)) {
        out += name;
    } else {
        AppendQuotedUntilZero(out, name);
    }
    for (const ValueSpec& argument : function.GetArgs()) {
        out += u' ';
        AppendArgument(out, argument, keys);
    }
}

void AppendOperatorValue(TStringCore& out, const TransformSpec& spec, KeyPathWriter& keys) {
    LUM_CHECK(IsPrimitiveStoreType(spec.GetValue()->GetStoreType()),
              LumError::OperatorTypeNotPrimitive);
    LUM_CHECK_NOT(spec.GetValue()->GetStoreType() == StoreType::External,
                  LumError::OperatorTypeExternal);
    out += u' ';
    AppendLiteral(out, *spec.GetValue());
    if (OperatorHasTypedArgument(spec.GetOperatorType())) {
        AppendTypeSpec(out, spec.GetValue()->GetType(), keys);
    }
}

void AppendStatement(TStringCore& out, const TransformSpec& transform, KeyPathWriter& keys) {
    if (!transform.GetComment().isEmpty()) {
        out.append(u"//", 2);
        out += transform.GetComment();
    }
    if (transform.GetOperatorType() == OperatorType::NoOp) {
        return;
    }
    for (const KeyPath& input : transform.GetInputs()) {
        keys.Append(out, input);
        out += u' ';
    }
    out.append(u"-> ", 3);
    out += OperatorTypeToString(transform.GetOperatorType());
    if (transform.GetValue()) {
        AppendOperatorValue(out, transform, keys);
    }
    if (transform.GetFunctionSpec()) {
        out.append(u" (", 2);
        AppendFunction(out, *transform.GetFunctionSpec(), keys);
        out += u')';
    }
    out.append(u" ->", 3);
    for (const KeyPath& output : transform.GetOutputs()) {
        out += u' ';
        keys.Append(out, output);
    }
}

void AppendTransform(TStringCore& out, const TransformSpec& transform, std::size_t level,
                     KeyPathWriter& keys) {
    const std::size_t indentation = 2 * level;
    std::fill_n(out.prepareAppend(indentation), indentation, u' ');
    out.commitAppend(indentation);
    AppendStatement(out, transform, keys);
    for (const TransformSpec& child : transform.GetChildTransforms()) {
        out += u'\n';
        AppendTransform(out, child, level + 1, keys);
    }
}

// A text that grows by itself is copied at each half of its length. So room is made ahead, for four
// times as many statements as were written, if there are that many.
constexpr std::size_t kFirstReserve = 64;

// Makes room for `count` statements that go on as the first `writtenCount` did, which stand behind
// `start`, and for a little more.
void ReserveFor(TStringCore& out, std::size_t start, std::size_t writtenCount, std::size_t count) {
    const std::size_t length = (out.length() - start) / writtenCount * count;
    out.reserve(std::min(start + length + length / 16, TStringCore::kMaxLength));
}

}  // namespace

TStringCore FunctionToString(const FunctionSpec& function) {
    TStringCore text;
    KeyPathWriter keys(nullptr, /*includeTypes=*/true, /*pathCount=*/1);
    AppendFunction(text, function, keys);
    return text;
}

TStringCore TransformToString(const TransformSpec& transform) {
    TStringCore text;
    TransformToString(text, transform);
    return text;
}

void TransformToString(TStringCore& out, const TransformSpec& transform) {
    KeyPathWriter keys(nullptr, /*includeTypes=*/true, /*pathCount=*/1);
    AppendTransform(out, transform, 0, keys);
}

void AppendVtlStatements(TStringCore& out, const std::vector<TransformSpec>& transforms,
                         bool includeComments, KeyPathSerializerCache& cache) {
    KeyPathWriter keys(&cache, /*includeTypes=*/true, transforms.size());
    const std::size_t start = out.length();
    std::size_t nextReserve = kFirstReserve;
    for (std::size_t i = 0; i < transforms.size(); ++i) {
        if (i == nextReserve) {
            nextReserve *= 4;
            ReserveFor(out, start, i, std::min(transforms.size(), nextReserve));
        }
        if (includeComments || transforms[i].GetOperatorType() != OperatorType::NoOp) {
            AppendTransform(out, transforms[i], 0, keys);
            out += u'\n';
        }
    }
}

TStringCore TransformsToString(const std::vector<TransformSpec>& transforms, bool includeComments,
                               KeyPathSerializerCache* cache) {
    std::optional<KeyPathSerializerCache> ownCache;
    if (cache == nullptr) {
        cache = &ownCache.emplace();
    }
    TStringCore text;
    AppendVtlStatements(text, transforms, includeComments, *cache);
    return text;
}

TStringCore TransformsToPayloadString(const std::vector<TransformSpec>& transforms,
                                      KeyPathSerializerCache* cache) {
    return TransformsToString(transforms, /*includeComments=*/false, cache);
}

}  // namespace lum::core
