#include "Program.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <iterator>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>
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
using Operator = SV (*)(const Statement&);

// The operators whose meaning is one function of what they read.
struct OperatorRow {
    OperatorType type;
    Operator run;
};
constexpr OperatorRow kOperators[] = {
    {OperatorType::Concat, RunConcat},
    {OperatorType::Constant, RunConstant},
    {OperatorType::Copy, RunCopy},
    {OperatorType::CreateKeySet, RunCreateKeySet},
    {OperatorType::CreateTable, RunCreateTable},
    {OperatorType::CrossJoin, RunCrossJoin},
    {OperatorType::Distinct, RunDistinct},
    {OperatorType::Filter, RunFilter},
    {OperatorType::FullOuterJoin, RunFullOuterJoin},
    {OperatorType::Index, RunIndex},
    {OperatorType::InnerJoin, RunInnerJoin},
    {OperatorType::LeftOuterJoin, RunLeftOuterJoin},
    {OperatorType::Map, RunMap},
    {OperatorType::MultiSort, RunMultiSort},
    {OperatorType::Reduce, RunReduce},
    {OperatorType::Reverse, RunReverse},
    {OperatorType::Scan, RunScan},
    {OperatorType::ScanRight, RunScanRight},
    {OperatorType::SetValue, RunSetValue},
    {OperatorType::SetValueMulti, RunSetValueMulti},
    {OperatorType::Slice, RunSlice},
    {OperatorType::Zip, RunZip},
    {OperatorType::ZipWith, RunZipWith},
};

Operator FindOperator(OperatorType type) {
    const auto* const found =
        std::find_if(std::begin(kOperators), std::end(kOperators),
                     [type](const OperatorRow& row) { return row.type == type; });
    return found == std::end(kOperators) ? nullptr : found->run;
}

bool IsSetter(OperatorType type) {
    return type == OperatorType::SetValue || type == OperatorType::SetValueMulti;
}

// The blocks and cases that are running, innermost first. Programs may nest and call further than a
// thread's stack reaches.
struct Frame {
    const TransformSpec* block;  // null for a case
    const Frame* outer;
    unsigned depth;
};
constexpr unsigned kMaxDepth = 500;

Frame Enter(const Frame* outer, const TransformSpec* block) {
    const unsigned depth = outer == nullptr ? 1 : outer->depth + 1;
    Require(depth <= kMaxDepth, LumError::InvalidNesting);
    return {block, outer, depth};
}

bool IsRunning(const Frame* frame, const TransformSpec& block) {
    for (; frame != nullptr; frame = frame->outer) {
        if (frame->block == &block) {
            return true;
        }
    }
    return false;
}

TStringCore ReadBlockName(const TransformSpec& spec) {
    const SV& value = spec.GetValue();
    Require(value != nullptr && value->GetStoreType() == StoreType::String && !value->IsSpecial() &&
                !value->AsString().GetRString().isEmpty(),
            LumError::BlockNameNeeded);
    return value->AsString();
}

lumsize_t CountRowsOfFirst(const std::vector<SV>& values) {
    for (const SV& value : values) {
        if (IsTable(value)) {
            return CountRows(value);
        }
        if (IsUniformCollectionStoreType(value)) {
            return value->AsUniformCollection().GetCount();
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
            if (spec.GetOperatorType() == OperatorType::Block) {
                // One that has no name, or another's, fails where it stands.
                const SV& name = spec.GetValue();
                if (name != nullptr && name->GetStoreType() == StoreType::String &&
                    !name->IsSpecial()) {
                    m_blocks.emplace(name->AsString().GetRString(), &spec);
                }
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
    using Names = std::unordered_set<RInternString>;

    // The names below which a statement, with those below it, reads and writes. A block does so
    // only when it is called, and then in a store of its own.
    static void CollectNames(const TransformSpec& spec, Names& reads, Names& writes) {
        if (spec.GetOperatorType() == OperatorType::Block) {
            return;
        }
        for (const KeyPath& key : spec.CollectAllInputs()) {
            if (key.GetCount() > 0) {
                reads.insert(key.GetSegments()[0].GetSegment());
            }
        }
        for (const KeyPath& key : spec.GetOutputs()) {
            if (key.GetCount() > 0) {
                writes.insert(key.GetSegments()[0].GetSegment());
            }
        }
    }

    std::size_t FindBatchEnd(std::size_t begin) const {
        Names reads;
        Names writes;
        const auto meets = [](const Names& some, const Names& others) {
            return std::any_of(some.begin(), some.end(),
                               [&](const RInternString& name) { return others.count(name) != 0; });
        };
        std::size_t end = begin;
        for (; end < m_transforms.size(); ++end) {
            Names nextReads;
            Names nextWrites;
            CollectNames(m_transforms[end], nextReads, nextWrites);
            if (meets(nextReads, writes) || meets(nextWrites, writes) || meets(nextWrites, reads)) {
                break;
            }
            reads.merge(nextReads);
            writes.merge(nextWrites);
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
            result.values = Compute(spec, store, nullptr);
            if (m_options.onStatement) {
                std::vector<SV> values;
                for (const KeyPath& input : spec.GetInputs()) {
                    if (SV value = store.TryGetValue(input)) {
                        values.push_back(std::move(value));
                    }
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
    std::vector<SV> Compute(const TransformSpec& spec, const IDataStore& store,
                            const Frame* frame) const {
        switch (spec.GetOperatorType()) {
            case OperatorType::NoOp:
                return {};
            case OperatorType::Block:
                CheckBlock(spec);
                return {};
            case OperatorType::Call:
                return RunCall(spec, store, frame);
            case OperatorType::Case:
                return RunCase(spec, store, frame);
            case OperatorType::ApplyByPartition:
            case OperatorType::GroupBy:
                return {RunPartitions(spec, store, frame)};
            case OperatorType::When:
            case OperatorType::Else:
                throw LumRuntimeException(LumError::WhenOrElseExpected);
            case OperatorType::Return:
                throw LumRuntimeException(LumError::ReturnOutsideBlock);
            default:
                break;
        }
        const Operator run = FindOperator(spec.GetOperatorType());
        Require(run != nullptr, LumError::NotImplemented,
                OperatorTypeToString(spec.GetOperatorType()));
        Require(spec.GetChildTransforms().empty(), LumError::UnexpectedChildTransform);
        Require(spec.GetOutputs().size() == 1, LumError::OneOutputNeeded);
        return {run(Statement(spec, store, m_lookup))};
    }

    void RunAll(const Transforms& transforms, std::size_t count, IDataStore& store,
                const Frame* frame) const {
        for (std::size_t i = 0; i < count; ++i) {
            Require(transforms[i].GetOperatorType() != OperatorType::Block, LumError::NestedBlocks);
            Store(transforms[i], Compute(transforms[i], store, frame), store);
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
        Require(isGood, LumError::IllegalOutputKey, key.ToString());
        // Only key maps can be written into, and those that are missing are made.
        std::vector<KeySegment> parent(key.GetSegments());
        for (parent.pop_back(); !parent.empty(); parent.pop_back()) {
            const SV value = store.TryGetValue(KeyPath(std::vector<KeySegment>(parent)));
            Require(value == nullptr || value->GetStoreType() == StoreType::KeyMap,
                    LumError::IllegalOutputKey, key.ToString());
        }
    }

    // Adds results under new keys, or, of the operators that set values, replaces old ones. Nothing
    // is stored where one of them cannot be.
    static void Store(const TransformSpec& spec, const std::vector<SV>& values, IDataStore& store) {
        const bool isSetter = IsSetter(spec.GetOperatorType());
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
        const auto found = m_blocks.find(ReadBlockName(spec));
        Require(found != m_blocks.end() && found->second == &spec,
                LumError::DuplicateTransformSpecs, ReadBlockName(spec));
        Require(spec.GetOutputs().empty(), LumError::EmptyOutputNeeded);
        Require(!spec.GetChildTransforms().empty(), LumError::ChildTransformsNeeded);
    }

    std::vector<SV> RunCall(const TransformSpec& spec, const IDataStore& store,
                            const Frame* frame) const {
        const TStringCore name = ReadBlockName(spec);
        const auto found = m_blocks.find(name);
        Require(found != m_blocks.end(), LumError::BlockNotDefined, name);
        const TransformSpec& block = *found->second;
        Require(!IsRunning(frame, block), LumError::BlockFunctionCalled, name);
        Require(block.GetInputs().size() == spec.GetInputs().size(), LumError::BlockInputCount);
        const Transforms& body = block.GetChildTransforms();
        Require(!body.empty(), LumError::ChildTransformsNeeded);

        const std::unique_ptr<IDataStore> scope =
            factory::MakeDataStore(std::unordered_map<RInternString, SV>());
        for (std::size_t i = 0; i < spec.GetInputs().size(); ++i) {
            scope->AddValue(block.GetInputs()[i],
                            ShareValue(ReadValue(store, spec.GetInputs()[i])));
        }
        const bool returns = body.back().GetOperatorType() == OperatorType::Return;
        const Frame here = Enter(frame, &block);
        RunAll(body, body.size() - (returns ? 1 : 0), *scope, &here);
        std::vector<SV> values;
        if (returns) {
            values = Statement(body.back(), *scope, m_lookup).ReadInputs();
        }
        Require(values.size() == spec.GetOutputs().size(), LumError::InvalidInputCount, name);
        return values;
    }

    // Whether a branch is to be taken.
    bool IsChosen(const TransformSpec& branch, const IDataStore& store) const {
        if (branch.GetOperatorType() == OperatorType::Else) {
            return true;
        }
        const SV answer = CallListFunction(Statement(branch, store, m_lookup));
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

    std::vector<SV> RunCase(const TransformSpec& spec, const IDataStore& store,
                            const Frame* frame) const {
        const Transforms& branches = spec.GetChildTransforms();
        Require(branches.size() >= 2, LumError::CaseNeedsTwoChildren);
        for (const TransformSpec& branch : branches) {
            const bool isLast = &branch == &branches.back();
            Require(branch.GetOperatorType() == (isLast ? OperatorType::Else : OperatorType::When),
                    isLast ? LumError::ElseNeedsCase : LumError::WhenNeedsCase);
            CheckBranchKeys(branch, spec.GetInputs());
        }
        const std::unique_ptr<IDataStore> scope =
            factory::MakeDataStore(std::unordered_map<RInternString, SV>());
        for (const KeyPath& input : spec.GetInputs()) {
            const SV value = ReadValue(store, input);
            if (scope->TryGetValue(input) == nullptr) {
                scope->AddValue(input, ShareValue(value));
            }
        }
        for (const TransformSpec& branch : branches) {
            if (!IsChosen(branch, *scope)) {
                continue;
            }
            const Frame here = Enter(frame, nullptr);
            RunAll(branch.GetChildTransforms(), branch.GetChildTransforms().size(), *scope, &here);
            std::vector<SV> values;
            for (const KeyPath& output : spec.GetOutputs()) {
                values.push_back(scope->TryGetValue(output));
                Require(values.back() != nullptr, LumError::BranchMissingOutput, output.ToString());
            }
            return values;
        }
        return {};
    }

    SV RunPartitions(const TransformSpec& spec, const IDataStore& store, const Frame* frame) const {
        const Transforms& children = spec.GetChildTransforms();
        Partitions partitions(Statement(spec, store, m_lookup));
        const Frame here = Enter(frame, nullptr);
        for (std::size_t run = 0; run < partitions.GetRunCount(); ++run) {
            const std::unique_ptr<IDataStore> scope = partitions.MakeScope(run);
            RunAll(children, children.size(), *scope, &here);
            partitions.Collect(*scope);
        }
        return partitions.MakeTable();
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
