#pragma once

#include <memory>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/FunctionSpec.h"
#include "lum/core/vtl/OperatorType.h"

namespace lum::core {

/// One statement of a program: an operator, the keys that it reads and writes, and optionally a
/// function, a literal, statements below it and a comment. A program is a vector of them. It is a
/// plain description: nothing tests whether an operator accepts what it is given, that is up to the
/// parser and to whoever runs the program.
///
/// Threads: one object belongs to one thread at a time while it changes.
/// Ownership: owns its keys and children. A copy has its own, children of all levels included, and
///   shares the function and the literal, which never change. One that was moved from may only be
///   destroyed and assigned to.
/// Units: keys and children stand in the order of the statement's text.
/// Errors: std::bad_alloc; the object stays as it was.
/// Cost: a move is a pointer, also where a vector of them grows. Assignment always copies, whatever
///   it is given: swap vectors, or construct in place, where that matters. Copies and destruction
///   recurse as deep as the children nest.
class LUM_CORE_API TransformSpec {
public:
    /// A comment line: NoOp, and the text behind the two slashes.
    explicit TransformSpec(const TStringCore& comment);
    /// Every part; `function` and `value` may be null.
    TransformSpec(OperatorType operatorType, std::vector<KeyPath>&& inputs,
                  std::vector<KeyPath>&& outputs, std::shared_ptr<FunctionSpec> function,
                  std::vector<TransformSpec>&& children, SV value, const TStringCore& comment);
    /// The forms below leave out parts, which stay empty.
    TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                  const std::vector<KeyPath>& outputs);
    TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                  const std::vector<KeyPath>& outputs, std::shared_ptr<FunctionSpec> function,
                  std::vector<TransformSpec>&& children, SV value);
    /// With `output` as the one output, also where it is empty.
    TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                  const KeyPath& output, std::vector<TransformSpec>&& children);
    TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                  const KeyPath& output, std::vector<TransformSpec>&& children,
                  const TStringCore& comment);
    TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                  const KeyPath& output, std::shared_ptr<FunctionSpec> function);
    /// An empty key, unlike above, gives no input or no output.
    TransformSpec(OperatorType operatorType, const KeyPath& input, const KeyPath& output,
                  std::shared_ptr<FunctionSpec> function, SV value);

    TransformSpec(const TransformSpec& other);
    TransformSpec(TransformSpec&& other) noexcept;
    TransformSpec& operator=(const TransformSpec& other);
    ~TransformSpec();

    OperatorType GetOperatorType() const noexcept;

    /// The parts themselves, for reading and for replacing; good while this object is neither
    /// assigned to nor moved from.
    const std::vector<KeyPath>& GetInputs() const noexcept;
    std::vector<KeyPath>& GetInputs() noexcept;
    const std::vector<KeyPath>& GetOutputs() const noexcept;
    std::vector<KeyPath>& GetOutputs() noexcept;
    /// Null where there is no function.
    const std::shared_ptr<FunctionSpec>& GetFunctionSpec() const noexcept;
    std::shared_ptr<FunctionSpec>& GetFunctionSpec() noexcept;
    const std::vector<TransformSpec>& GetChildTransforms() const noexcept;
    std::vector<TransformSpec>& GetChildTransforms() noexcept;
    /// The operator's literal; null where there is none.
    const SV& GetValue() const noexcept;
    SV& GetValue() noexcept;
    const TStringCore& GetComment() const noexcept;
    TStringCore& GetComment() noexcept;

    /// The inputs, then the keys among the function's arguments, in order. Children add nothing.
    /// Errors: those of ValueSpec::IsKey.
    std::vector<KeyPath> CollectAllInputs() const;

private:
    struct Impl;

    std::unique_ptr<Impl> m_impl;
};

}  // namespace lum::core
