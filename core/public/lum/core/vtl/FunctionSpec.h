#pragma once

#include <memory>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/store/StoreValueFwd.h"
#include "lum/core/utility/RInternString.h"
#include "lum/core/vtl/ValueSpec.h"

namespace lum::core {

/// A reference to a function by name, with its operands in the order of the statement's text. It
/// says nothing about whether there is such a function. Whoever wants other operands makes another
/// one.
///
/// Threads: never changes, so any number of threads may read one at once.
/// Ownership: lives behind shared ownership alone; transforms and their copies share it.
/// Errors: of Make, ValueSpecHoldsKey for a missing value and ValueSpecHoldsValue for an empty key,
///   both reported; std::bad_alloc.
class LUM_CORE_API FunctionSpec {
public:
    virtual ~FunctionSpec();
    virtual const RInternString& GetName() const = 0;
    virtual const std::vector<ValueSpec>& GetArgs() const = 0;

    FunctionSpec(const FunctionSpec&) = delete;
    FunctionSpec& operator=(const FunctionSpec&) = delete;

    /// Any name will do, the empty one included.
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name, const SV& value);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name,
                                              const std::vector<KeyPath>& keys);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name,
                                              const std::vector<ValueSpec>& args);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name,
                                              std::vector<ValueSpec>&& args);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name, const KeyPath& key);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name, const KeyPath& first,
                                              const KeyPath& second);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name, const KeyPath& first,
                                              const KeyPath& second, const KeyPath& third);
    static std::shared_ptr<FunctionSpec> Make(const RInternString& name, const KeyPath& first,
                                              const KeyPath& second, const KeyPath& third,
                                              const KeyPath& fourth);

protected:
    FunctionSpec() = default;
};

}  // namespace lum::core
