#include "lum/core/functions/FunctionRegistry.h"

#include <utility>

#include "lum/core/Check.h"
#include "lum/core/functions/FunctionRegistryMap.h"

namespace lum::core {
namespace {

class FunctionRegistryImpl final : public FunctionRegistry {
public:
    const RegistryOfUnaryFunctions& GetUnaryFunctions() const override { return m_unary; }
    const RegistryOfBinaryFunctions& GetBinaryFunctions() const override { return m_binary; }
    const RegistryOfMultinaryFunctions& GetMultinaryFunctions() const override {
        return m_multinary;
    }
    RegistryOfUnaryFunctions& GetUnaryFunctions() override { return m_unary; }
    RegistryOfBinaryFunctions& GetBinaryFunctions() override { return m_binary; }
    RegistryOfMultinaryFunctions& GetMultinaryFunctions() override { return m_multinary; }

    bool HasFunction(const FunctionKey& query) const override {
        return m_infos.TryFind(query) != nullptr;
    }
    const FunctionInfo& GetFunction(const FunctionKey& query) const override {
        return m_infos.Find(query);
    }

    void AddFunction(const FunctionKey& key, FunctionInfo info) override {
        LUM_CHECK(m_infos.FindExact(key) == nullptr, LumError::FunctionExists, key.GetName());
        m_infos.Insert(FunctionKey(key), std::move(info));
    }
    void VisitFunctions(const Visitor& visit) const override { m_infos.ForEach(visit); }

private:
    FunctionFormRegistry::AddedCallback MakeCallback() {
        return [this](const FunctionKey& key, FunctionInfo&& info) {
            AddFunction(key, std::move(info));
        };
    }

    FunctionRegistryMap<FunctionInfo> m_infos;
    RegistryOfUnaryFunctions m_unary{MakeCallback()};
    RegistryOfBinaryFunctions m_binary{MakeCallback()};
    RegistryOfMultinaryFunctions m_multinary{MakeCallback()};
};

}  // namespace

IFunctionLookup::~IFunctionLookup() = default;

std::unique_ptr<FunctionRegistry> FunctionRegistry::Make() {
    return std::make_unique<FunctionRegistryImpl>();
}

}  // namespace lum::core
