#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

#include "fuzz/FuzzNames.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/vtl/TransformSpec.h"

/// Which programs read back from their own text.
namespace lumfuzz {

inline bool ReadsBack(const KeyPath& path) {
    return NamesReadBack(path) && TypesReadBack(path);
}

/// A quoted text is written up to its first NUL.
inline bool IsCut(const TStringCore& text) {
    return text.view().find(u'\0') != std::u16string_view::npos;
}

/// Special values of rows and of the like have no text at all.
inline bool ReadsBack(const StoreValue& value) {
    const StoreType type = value.GetStoreType();
    return IsPrimitiveStoreType(type) && type != StoreType::External &&
           ReadsBack(*value.GetType()) &&
           !(type == StoreType::String && !value.IsSpecial() &&
             IsCut(value.AsString().GetRString()));
}

inline bool ReadsBack(const FunctionSpec& function) {
    return !IsCut(function.GetName().GetValue()) &&
           std::all_of(function.GetArgs().begin(), function.GetArgs().end(),
                       [](const ValueSpec& argument) {
                           return argument.IsKey() ? ReadsBack(argument.GetKeyPath())
                                                   : ReadsBack(*argument.GetValue());
                       });
}

/// A comment without a text prints as a blank line, and so does a statement that names noOp; in an
/// indented comment quotes and backslashes take in the next lines.
inline bool ReadsBack(const TransformSpec& transform, bool isIndented) {
    const auto readsBack = [](const KeyPath& key) { return ReadsBack(key); };
    const TStringCore& comment = transform.GetComment();
    if (transform.GetOperatorType() == OperatorType::NoOp) {
        return !comment.isEmpty() &&
               !(isIndented && (comment.contains(L"'") || comment.contains(L"\\")));
    }
    return std::all_of(transform.GetInputs().begin(), transform.GetInputs().end(), readsBack) &&
           std::all_of(transform.GetOutputs().begin(), transform.GetOutputs().end(), readsBack) &&
           (!transform.GetFunctionSpec() || ReadsBack(*transform.GetFunctionSpec())) &&
           (!transform.GetValue() || ReadsBack(*transform.GetValue())) &&
           std::all_of(
               transform.GetChildTransforms().begin(), transform.GetChildTransforms().end(),
               [](const TransformSpec& child) { return ReadsBack(child, /*isIndented=*/true); });
}

inline bool ReadsBack(const std::vector<TransformSpec>& program) {
    return std::all_of(program.begin(), program.end(), [](const TransformSpec& transform) {
        return ReadsBack(transform, /*isIndented=*/false);
    });
}

}  // namespace lumfuzz
