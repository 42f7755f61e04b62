#include "lum/core/vtl/Visitors.h"

#include <utility>

namespace lum::core::Visitors {
namespace {

using RewriteFn = std::function<KeyPath(const KeyPath&)>;

std::vector<KeyPath> RewrittenKeys(const RewriteFn& rewrite, const std::vector<KeyPath>& keys) {
    std::vector<KeyPath> rewritten;
    rewritten.reserve(keys.size());
    for (const KeyPath& key : keys) {
        rewritten.push_back(rewrite(key));
    }
    return rewritten;
}

std::shared_ptr<FunctionSpec> RewrittenFunction(const RewriteFn& rewrite,
                                                const FunctionSpec& function) {
    std::vector<ValueSpec> args;
    args.reserve(function.GetArgs().size());
    for (const ValueSpec& argument : function.GetArgs()) {
        if (argument.IsKey()) {
            args.emplace_back(rewrite(argument.GetKeyPath()));
        } else {
            args.push_back(argument);
        }
    }
    return FunctionSpec::Make(function.GetName(), std::move(args));
}

TransformSpec Rewritten(const RewriteFn& outputFn, const RewriteFn& inputFn,
                        const TransformSpec& transform, bool recurse) {
    // The order of the calls is part of the contract, so each has a statement of its own.
    std::vector<TransformSpec> children =
        recurse ? RewriteKeys(outputFn, inputFn, transform.GetChildTransforms(), recurse)
                : transform.GetChildTransforms();
    std::vector<KeyPath> outputs = RewrittenKeys(outputFn, transform.GetOutputs());
    std::vector<KeyPath> inputs = RewrittenKeys(inputFn, transform.GetInputs());
    std::shared_ptr<FunctionSpec> function;
    if (transform.GetFunctionSpec()) {
        function = RewrittenFunction(inputFn, *transform.GetFunctionSpec());
    }
    return TransformSpec(transform.GetOperatorType(), std::move(inputs), std::move(outputs),
                         std::move(function), std::move(children), transform.GetValue(),
                         TStringCore());
}

}  // namespace

void OverwriteKeys(const std::function<void(KeyPath&)>& outputFn,
                   const std::function<void(KeyPath&)>& inputFn,
                   std::vector<TransformSpec>& transforms, bool recurse) {
    for (TransformSpec& transform : transforms) {
        OverwriteKeys(outputFn, inputFn, transform, recurse);
    }
}

void OverwriteKeys(const std::function<void(KeyPath&)>& outputFn,
                   const std::function<void(KeyPath&)>& inputFn, TransformSpec& transform,
                   bool recurse) {
    if (recurse) {
        OverwriteKeys(outputFn, inputFn, transform.GetChildTransforms(), recurse);
    }
    if (outputFn) {
        for (KeyPath& output : transform.GetOutputs()) {
            outputFn(output);
        }
    }
    if (!inputFn) {
        return;
    }
    for (KeyPath& input : transform.GetInputs()) {
        inputFn(input);
    }
    std::shared_ptr<FunctionSpec>& function = transform.GetFunctionSpec();
    if (function) {
        std::vector<ValueSpec> args = function->GetArgs();
        for (ValueSpec& argument : args) {
            if (argument.IsKey()) {
                inputFn(argument.GetKeyPath());
            }
        }
        function = FunctionSpec::Make(function->GetName(), std::move(args));
    }
}

void PreOrderVisit(const std::function<void(const TransformSpec&)>& transformFn,
                   const std::function<void(const KeyPath&)>& outputKeyFn,
                   const std::function<void(const KeyPath&)>& inputKeyFn,
                   const std::vector<TransformSpec>& transforms, bool recurse) {
    for (const TransformSpec& transform : transforms) {
        PreOrderVisit(transformFn, outputKeyFn, inputKeyFn, transform, recurse);
    }
}

void PreOrderVisit(const std::function<void(const TransformSpec&)>& transformFn,
                   const std::function<void(const KeyPath&)>& outputKeyFn,
                   const std::function<void(const KeyPath&)>& inputKeyFn,
                   const TransformSpec& transform, bool recurse) {
    if (recurse) {
        PreOrderVisit(transformFn, outputKeyFn, inputKeyFn, transform.GetChildTransforms(),
                      recurse);
    }
    if (transformFn) {
        transformFn(transform);
    }
    if (outputKeyFn) {
        for (const KeyPath& output : transform.GetOutputs()) {
            outputKeyFn(output);
        }
    }
    if (!inputKeyFn) {
        return;
    }
    for (const KeyPath& input : transform.GetInputs()) {
        inputKeyFn(input);
    }
    if (transform.GetFunctionSpec()) {
        for (const ValueSpec& argument : transform.GetFunctionSpec()->GetArgs()) {
            if (argument.IsKey()) {
                inputKeyFn(argument.GetKeyPath());
            }
        }
    }
}

std::vector<TransformSpec> RewriteKeys(const RewriteFn& outputFn, const RewriteFn& inputFn,
                                       const std::vector<TransformSpec>& transforms, bool recurse) {
    std::vector<TransformSpec> rewritten;
    rewritten.reserve(transforms.size());
    for (const TransformSpec& transform : transforms) {
        if (transform.GetOperatorType() == OperatorType::NoOp) {
            rewritten.push_back(transform);
        } else {
            rewritten.push_back(Rewritten(outputFn, inputFn, transform, recurse));
        }
    }
    return rewritten;
}

}  // namespace lum::core::Visitors
