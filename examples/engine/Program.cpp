#include "Program.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <map>
#include <memory>
#include <span>
#include <unordered_map>
#include <utility>

#include "Columns.h"
#include "Operators.h"
#include "Partitions.h"
#include "Statement.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "lum/core/utility/LumThreadPool.h"
#include "lum/core/vtl/OperatorTypeText.h"

namespace lumengine {
namespace {

using namespace lum::core;
using Clock = std::chrono::steady_clock;
using Transforms = std::vector<TransformSpec>;

const Operator* FindOperator(OperatorType type) {
    for (const std::span<const Operator> operators :
         {kRowOperators, kElementOperators, kCollectionOperators, kJoinOperators}) {
        for (const Operator& candidate : operators) {
            if (candidate.type == type) {
                return &candidate;
            }
        }
    }
    return nullptr;
}

// The blocks, cases and groups that are running, outermost first. Programs may nest and call
// further than a thread's stack reaches.
using Running = std::vector<const TransformSpec*>;
constexpr std::size_t kMaxDepth = 500;

Running Enter(Running outer, const TransformSpec& spec) {
    Require(outer.size() < kMaxDepth, LumError::InvalidNesting);
    outer.push_back(&spec);
    return outer;
}

// The name of a block or a call; empty where there is none.
TStringCore FindBlockName(const TransformSpec& spec) {
    const SV& value = spec.GetValue();
    return IsNormal(value, StoreType::String) ? value->AsString().GetRString() : TStringCore();
}

TStringCore ReadBlockName(const TransformSpec& spec) {
    TStringCore name = FindBlockName(spec);
    Require(!name.isEmpty(), LumError::BlockNameNeeded);
    return name;
}

lumsize_t CountRowsOfFirst(const std::vector<SV>& values) {
    for (const SV& value : values) {
        if (value != nullptr && (IsTable(value) || IsUniformCollectionStoreType(value))) {
            return CountRows(value);
        }
    }
    return 1;
}

// What is computed of a statement, or why it could not be.
struct Result {
    std::vector<SV> values;
    std::exception_ptr failure;
    lumsize_t rows = 1;
    Clock::duration time{};
};

class Engine {
public:
    Engine(const Transforms& transforms, const IFunctionLookup& lookup, const RunOptions& options)
        : m_transforms(transforms), m_lookup(lookup), m_options(options) {
        for (const TransformSpec& spec : transforms) {
            // One that has no name, or another's, fails where it stands.
            if (spec.GetOperatorType() == OperatorType::Block) {
                m_blocks.emplace(FindBlockName(spec), &spec);
            }
        }
    }

    void Run(IDataStore& store) const {
        for (std::size_t begin = 0; begin < m_transforms.size();) {
            const std::size_t end = m_options.isParallel ? FindBatchEnd(begin) : begin + 1;
            RunBatch(store, begin, end);
            begin = end;
        }
    }

private:
    // Names of the store's root, and whether something is written below them.
    using Names = std::unordered_map<RInternString, bool>;

    // The names below which a statement, with those below it, reads and writes. A block does so
    // only when it is called, and then in a store of its own.
    static Names CollectNames(const TransformSpec& spec) {
        Names names;
        const auto add = [&](const std::vector<KeyPath>& keys, bool isWritten) {
            for (const KeyPath& key : keys) {
                if (key.GetCount() > 0) {
                    names[key.GetSegments()[0].GetSegment()] = isWritten;
                }
            }
        };
        if (spec.GetOperatorType() != OperatorType::Block) {
            add(spec.CollectAllInputs(), false);
            add(spec.GetOutputs(), true);
        }
        return names;
    }

    std::size_t FindBatchEnd(std::size_t begin) const {
        Names names;
        const auto meets = [&](const Names::value_type& next) {
            const auto found = names.find(next.first);
            return found != names.end() && (found->second || next.second);
        };
        std::size_t end = begin;
        for (; end < m_transforms.size(); ++end) {
            Names next = CollectNames(m_transforms[end]);
            if (std::any_of(next.begin(), next.end(), meets)) {
                break;
            }
            names.merge(next);
        }
        return end;
    }

    void RunBatch(IDataStore& store, std::size_t begin, std::size_t end) const {
        std::vector<Result> results(end - begin);
        std::atomic<std::size_t> next{0};
        const auto computeUntilNoneIsLeft = [&] {
            for (std::size_t i = next++; i < results.size(); i = next++) {
                results[i] = TryCompute(m_transforms[begin + i], store);
            }
        };
        std::vector<std::unique_ptr<LumThreadPool::TaskWorkerHandle>> workers;
        if (results.size() > 1) {
            workers.resize(LumThreadPool::RecommendedNumberOfWorkers(
                static_cast<unsigned>(results.size() - 1)));
            for (auto& worker : workers) {
                worker = LumThreadPool::ScheduleTaskWorker(computeUntilNoneIsLeft);
            }
        }
        computeUntilNoneIsLeft();
        LumThreadPool::Wait(std::move(workers));
        for (std::size_t i = 0; i < results.size(); ++i) {
            Result& result = results[i];
            if (result.failure != nullptr) {
                std::rethrow_exception(result.failure);
            }
            Store(m_transforms[begin + i], result.values, store);
            if (m_options.onStatement) {
                m_options.onStatement({begin + i, result.rows, result.time});
            }
        }
    }

    Result TryCompute(const TransformSpec& spec, const IDataStore& store) const {
        Result result;
        const Clock::time_point start = Clock::now();
        try {
            result.values = Compute(Statement{spec, store, m_lookup}, {});
            if (m_options.onStatement) {
                std::vector<SV> values;
                for (const KeyPath& input : spec.GetInputs()) {
                    values.push_back(store.TryGetValue(input));
                }
                values.insert(values.end(), result.values.begin(), result.values.end());
                result.rows = CountRowsOfFirst(values);
            }
        } catch (...) {  // Kept until the statements before this one are stored.
            result.failure = std::current_exception();
        }
        result.time = Clock::now() - start;
        return result;
    }

    // The values of the statement's outputs, in order.
    std::vector<SV> Compute(const Statement& statement, const Running& running) const {
        const TransformSpec& spec = statement.spec;
        const OperatorType type = spec.GetOperatorType();
        switch (type) {
            case OperatorType::NoOp:
                return {};
            case OperatorType::Block:
                CheckBlock(spec);
                return {};
            case OperatorType::Call:
                return RunCall(statement, running);
            case OperatorType::Case:
                return RunCase(statement, running);
            case OperatorType::ApplyByPartition:
            case OperatorType::GroupBy:
                return {RunPartitions(statement, running)};
            case OperatorType::When:
            case OperatorType::Else:
                throw LumRuntimeException(LumError::WhenOrElseExpected);
            case OperatorType::Return:
                throw LumRuntimeException(LumError::ReturnOutsideBlock);
            default:
                break;
        }
        const Operator* const found = FindOperator(type);
        Require(found != nullptr, LumError::NotImplemented, OperatorTypeToString(type));
        Require(spec.GetChildTransforms().empty(), LumError::UnexpectedChildTransform);
        Require(spec.GetOutputs().size() == 1, LumError::OneOutputNeeded);
        statement.ExpectNoneBut(found->parts);
        return {found->run(statement)};
    }

    void RunAll(std::span<const TransformSpec> transforms, IDataStore& store,
                const Running& running) const {
        for (const TransformSpec& spec : transforms) {
            Require(spec.GetOperatorType() != OperatorType::Block, LumError::NestedBlocks);
            Store(spec, Compute(Statement{spec, store, m_lookup}, running), store);
        }
    }

    // A key that can be written, whatever stands there.
    static void CheckOutputKey(const std::vector<KeyPath>& outputs, std::size_t index,
                               const IDataStore& store) {
        const KeyPath& key = outputs[index];
        bool isGood = key.GetCount() > 0;
        for (const KeySegment& segment : key.GetSegments()) {
            isGood = isGood && !segment.GetSegment().GetValue().isEmpty();
        }
        for (std::size_t other = 0; other < index; ++other) {
            isGood = isGood && !outputs[other].IsPrefixOf(key) && !key.IsPrefixOf(outputs[other]);
        }
        // Only key maps can be written into, and those that are missing are made.
        for (KeyPath above = key; isGood && above.GetCount() > 1;) {
            above = above.GetParent();
            const SV value = store.TryGetValue(above);
            isGood = value == nullptr || value->GetStoreType() == StoreType::KeyMap;
        }
        Require(isGood, LumError::IllegalOutputKey, key.ToString());
    }

    // Adds results under new keys, or, of the operators that set values, replaces old ones. Nothing
    // is stored where one of them cannot be.
    static void Store(const TransformSpec& spec, const std::vector<SV>& values, IDataStore& store) {
        const OperatorType type = spec.GetOperatorType();
        const bool isSetter = type == OperatorType::SetValue || type == OperatorType::SetValueMulti;
        for (std::size_t i = 0; i < values.size(); ++i) {
            const KeyPath& key = spec.GetOutputs()[i];
            CheckOutputKey(spec.GetOutputs(), i, store);
            const SV old = store.TryGetValue(key);
            if (old == nullptr) {
                continue;
            }
            Require(isSetter, LumError::ValueAlreadySet, key.ToString());
            Require(IsPrimitive(old->GetType()), LumError::KeyNotUpdatable, key.ToString());
            Require(old->GetType() == values[i]->GetType(), LumError::SetValueTypeMismatch,
                    spec.GetFunctionSpec()->GetName());
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            store.SetValue(spec.GetOutputs()[i], values[i]);
        }
    }

    void CheckBlock(const TransformSpec& spec) const {
        const TStringCore name = ReadBlockName(spec);
        Require(m_blocks.at(name) == &spec, LumError::DuplicateTransformSpecs, name);
        Require(spec.GetOutputs().empty(), LumError::EmptyOutputNeeded);
        Require(!spec.GetChildTransforms().empty(), LumError::ChildTransformsNeeded);
    }

    std::vector<SV> RunCall(const Statement& call, const Running& running) const {
        const std::vector<KeyPath>& inputs = call.spec.GetInputs();
        const TStringCore name = ReadBlockName(call.spec);
        const auto found = m_blocks.find(name);
        Require(found != m_blocks.end(), LumError::BlockNotDefined, name);
        const TransformSpec& block = *found->second;
        Require(std::count(running.begin(), running.end(), &block) == 0,
                LumError::BlockFunctionCalled, name);
        Require(block.GetInputs().size() == inputs.size(), LumError::BlockInputCount);
        const std::span<const TransformSpec> body = block.GetChildTransforms();
        Require(!body.empty(), LumError::ChildTransformsNeeded);

        const std::unique_ptr<IDataStore> scope = MakeEmptyStore();
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            scope->AddValue(block.GetInputs()[i], ShareValue(ReadValue(call.store, inputs[i])));
        }
        const Statement last{body.back(), *scope, m_lookup};
        const bool returns = body.back().GetOperatorType() == OperatorType::Return;
        RunAll(body.first(body.size() - (returns ? 1 : 0)), *scope, Enter(running, block));
        const std::vector<SV> values = returns ? last.ReadInputs() : std::vector<SV>();
        Require(values.size() == call.spec.GetOutputs().size(), LumError::InvalidInputCount, name);
        return values;
    }

    // Whether a branch is to be taken.
    bool IsChosen(const TransformSpec& branch, const IDataStore& store) const {
        if (branch.GetOperatorType() == OperatorType::Else) {
            return true;
        }
        const SV answer = CallListFunction(Statement{branch, store, m_lookup});
        Require(answer->GetStoreType() == StoreType::Bool, LumError::WhenNeedsBool);
        return answer->AsBool();
    }

    // A branch sees the inputs of the case and what it wrote itself, so that the statement tells
    // all that it depends on.
    static void CheckBranchKeys(const TransformSpec& branch, std::vector<KeyPath> known) {
        const auto check = [&](const TransformSpec& spec) {
            for (const KeyPath& key : spec.CollectAllInputs()) {
                Require(std::any_of(known.begin(), known.end(),
                                    [&](const KeyPath& above) { return above.IsPrefixOf(key); }),
                        LumError::CaseMissingInput, key.ToString());
            }
        };
        check(branch);
        for (const TransformSpec& child : branch.GetChildTransforms()) {
            check(child);
            known.insert(known.end(), child.GetOutputs().begin(), child.GetOutputs().end());
        }
    }

    std::vector<SV> RunCase(const Statement& statement, const Running& running) const {
        const TransformSpec& spec = statement.spec;
        const Transforms& branches = spec.GetChildTransforms();
        Require(branches.size() >= 2, LumError::CaseNeedsTwoChildren);
        for (const TransformSpec& branch : branches) {
            const bool isLast = &branch == &branches.back();
            Require(branch.GetOperatorType() == (isLast ? OperatorType::Else : OperatorType::When),
                    isLast ? LumError::ElseNeedsCase : LumError::WhenNeedsCase);
            CheckBranchKeys(branch, spec.GetInputs());
        }
        const std::unique_ptr<IDataStore> scope = MakeEmptyStore();
        for (const KeyPath& input : spec.GetInputs()) {
            if (scope->TryGetValue(input) == nullptr) {
                scope->AddValue(input, ShareValue(ReadValue(statement.store, input)));
            }
        }
        // There is one, since an else is always taken.
        const auto chosen =
            std::find_if(branches.begin(), branches.end(),
                         [&](const TransformSpec& branch) { return IsChosen(branch, *scope); });
        RunAll(chosen->GetChildTransforms(), *scope, Enter(running, spec));
        std::vector<SV> values;
        for (const KeyPath& output : spec.GetOutputs()) {
            values.push_back(scope->TryGetValue(output));
            Require(values.back() != nullptr, LumError::BranchMissingOutput, output.ToString());
        }
        return values;
    }

    SV RunPartitions(const Statement& statement, const Running& running) const {
        const TransformSpec& spec = statement.spec;
        const Running here = Enter(running, spec);
        return RunByPartition(
            statement, [&](IDataStore& scope) { RunAll(spec.GetChildTransforms(), scope, here); });
    }

    const Transforms& m_transforms;
    const IFunctionLookup& m_lookup;
    const RunOptions& m_options;
    std::map<TStringCore, const TransformSpec*> m_blocks;
};

}  // namespace

void RunProgram(const std::vector<TransformSpec>& transforms, IDataStore& store,
                const IFunctionLookup& lookup, const RunOptions& options) {
    Engine(transforms, lookup, options).Run(store);
}

}  // namespace lumengine
