#include "lum/core/vtl/TransformSpec.h"

#include <utility>

#include "lum/core/store/StoreValue.h"

namespace lum::core {

struct TransformSpec::Impl {
    OperatorType operatorType;
    std::vector<KeyPath> inputs;
    std::vector<KeyPath> outputs;
    std::shared_ptr<FunctionSpec> function;
    std::vector<TransformSpec> children;
    SV value;
    TStringCore comment;
};

namespace {

std::vector<KeyPath> KeysOf(const KeyPath& key) {
    return key.IsEmpty() ? std::vector<KeyPath>() : std::vector<KeyPath>{key};
}

}  // namespace

TransformSpec::TransformSpec(OperatorType operatorType, std::vector<KeyPath>&& inputs,
                             std::vector<KeyPath>&& outputs, std::shared_ptr<FunctionSpec> function,
                             std::vector<TransformSpec>&& children, SV value,
                             const TStringCore& comment)
    : m_impl(new Impl{operatorType, std::move(inputs), std::move(outputs), std::move(function),
                      std::move(children), std::move(value), comment}) {}

TransformSpec::TransformSpec(const TStringCore& comment)
    : TransformSpec(OperatorType::NoOp, {}, {}, nullptr, {}, nullptr, comment) {}

TransformSpec::TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                             const std::vector<KeyPath>& outputs)
    : TransformSpec(operatorType, inputs, outputs, nullptr, std::vector<TransformSpec>(), nullptr) {
}

TransformSpec::TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                             const std::vector<KeyPath>& outputs,
                             std::shared_ptr<FunctionSpec> function,
                             std::vector<TransformSpec>&& children, SV value)
    : TransformSpec(operatorType, std::vector<KeyPath>(inputs), std::vector<KeyPath>(outputs),
                    std::move(function), std::move(children), std::move(value), TStringCore()) {}

TransformSpec::TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                             const KeyPath& output, std::vector<TransformSpec>&& children)
    : TransformSpec(operatorType, inputs, output, std::move(children), TStringCore()) {}

TransformSpec::TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                             const KeyPath& output, std::vector<TransformSpec>&& children,
                             const TStringCore& comment)
    : TransformSpec(operatorType, std::vector<KeyPath>(inputs), std::vector<KeyPath>{output},
                    nullptr, std::move(children), nullptr, comment) {}

TransformSpec::TransformSpec(OperatorType operatorType, const std::vector<KeyPath>& inputs,
                             const KeyPath& output, std::shared_ptr<FunctionSpec> function)
    : TransformSpec(operatorType, std::vector<KeyPath>(inputs), std::vector<KeyPath>{output},
                    std::move(function), std::vector<TransformSpec>(), nullptr, TStringCore()) {}

TransformSpec::TransformSpec(OperatorType operatorType, const KeyPath& input, const KeyPath& output,
                             std::shared_ptr<FunctionSpec> function, SV value)
    : TransformSpec(operatorType, KeysOf(input), KeysOf(output), std::move(function),
                    std::vector<TransformSpec>(), std::move(value), TStringCore()) {}

TransformSpec::TransformSpec(const TransformSpec& other) : m_impl(new Impl(*other.m_impl)) {}

TransformSpec::TransformSpec(TransformSpec&& other) noexcept = default;

TransformSpec& TransformSpec::operator=(const TransformSpec& other) {
    TransformSpec copy(other);
    m_impl.swap(copy.m_impl);
    return *this;
}

TransformSpec::~TransformSpec() = default;

OperatorType TransformSpec::GetOperatorType() const noexcept {
    return m_impl->operatorType;
}

const std::vector<KeyPath>& TransformSpec::GetInputs() const noexcept {
    return m_impl->inputs;
}
std::vector<KeyPath>& TransformSpec::GetInputs() noexcept {
    return m_impl->inputs;
}
const std::vector<KeyPath>& TransformSpec::GetOutputs() const noexcept {
    return m_impl->outputs;
}
std::vector<KeyPath>& TransformSpec::GetOutputs() noexcept {
    return m_impl->outputs;
}
const std::shared_ptr<FunctionSpec>& TransformSpec::GetFunctionSpec() const noexcept {
    return m_impl->function;
}
std::shared_ptr<FunctionSpec>& TransformSpec::GetFunctionSpec() noexcept {
    return m_impl->function;
}
const std::vector<TransformSpec>& TransformSpec::GetChildTransforms() const noexcept {
    return m_impl->children;
}
std::vector<TransformSpec>& TransformSpec::GetChildTransforms() noexcept {
    return m_impl->children;
}
const SV& TransformSpec::GetValue() const noexcept {
    return m_impl->value;
}
SV& TransformSpec::GetValue() noexcept {
    return m_impl->value;
}
const TStringCore& TransformSpec::GetComment() const noexcept {
    return m_impl->comment;
}
TStringCore& TransformSpec::GetComment() noexcept {
    return m_impl->comment;
}

std::vector<KeyPath> TransformSpec::CollectAllInputs() const {
    std::vector<KeyPath> keys = m_impl->inputs;
    if (m_impl->function) {
        for (const ValueSpec& argument : m_impl->function->GetArgs()) {
            if (argument.IsKey()) {
                keys.push_back(argument.GetKeyPath());
            }
        }
    }
    return keys;
}

}  // namespace lum::core
