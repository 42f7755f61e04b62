#include "lum/core/vtl/FunctionSpec.h"

#include <utility>

#include "lum/core/store/StoreValue.h"

namespace lum::core {
namespace {

class FunctionSpecImpl final : public FunctionSpec {
public:
    FunctionSpecImpl(const RInternString& name, std::vector<ValueSpec>&& args) noexcept
        : m_name(name), m_args(std::move(args)) {}

    const RInternString& GetName() const override { return m_name; }
    const std::vector<ValueSpec>& GetArgs() const override { return m_args; }

private:
    const RInternString m_name;
    const std::vector<ValueSpec> m_args;
};

template <typename... Operands>
std::shared_ptr<FunctionSpec> MakeOf(const RInternString& name, const Operands&... operands) {
    std::vector<ValueSpec> args;
    args.reserve(sizeof...(operands));
    (args.emplace_back(operands), ...);
    return FunctionSpec::Make(name, std::move(args));
}

}  // namespace

FunctionSpec::~FunctionSpec() = default;

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name) {
    return MakeOf(name);
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name, const SV& value) {
    return MakeOf(name, value);
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name,
                                                 const std::vector<KeyPath>& keys) {
    return Make(name, std::vector<ValueSpec>(keys.begin(), keys.end()));
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name,
                                                 const std::vector<ValueSpec>& args) {
    return Make(name, std::vector<ValueSpec>(args));
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name,
                                                 std::vector<ValueSpec>&& args) {
    return std::make_shared<FunctionSpecImpl>(name, std::move(args));
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name, const KeyPath& key) {
    return MakeOf(name, key);
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name, const KeyPath& first,
                                                 const KeyPath& second) {
    return MakeOf(name, first, second);
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name, const KeyPath& first,
                                                 const KeyPath& second, const KeyPath& third) {
    return MakeOf(name, first, second, third);
}

std::shared_ptr<FunctionSpec> FunctionSpec::Make(const RInternString& name, const KeyPath& first,
                                                 const KeyPath& second, const KeyPath& third,
                                                 const KeyPath& fourth) {
    return MakeOf(name, first, second, third, fourth);
}

}  // namespace lum::core
