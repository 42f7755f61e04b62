#include "lum/core/functions/FunctionOverloads.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "lum/core/Check.h"
#include "lum/core/types/StoreType.h"

namespace lum::core {
namespace {

constexpr int kNoFit = -1;

/// How many wild cards of the candidate the query needs, or kNoFit.
int CountWildCardsUsed(const FunctionKey& query, const FunctionKey& candidate) {
    const TypeRefVec<VariableTypeRef>& asked = query.GetInputTypes();
    const TypeRefVec<VariableTypeRef>& offered = candidate.GetInputTypes();
    const bool takesEveryType = query.GetInputArgContainer() == FunctionKey::ArgContainer::Vector;
    int count = 0;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        if (asked[i] == offered[i]) {
            continue;
        }
        if (asked[i].IsAnyType()) {
            return kNoFit;
        }
        const StoreType storeType = asked[i]->GetStoreType();
        if (!offered[i].IsAnyType()) {
            if (offered[i]->Is(storeType)) {
                continue;
            }
            return kNoFit;
        }
        if (!takesEveryType && !IsCollectionStoreType(storeType)) {
            return kNoFit;
        }
        ++count;
    }
    return count;
}

}  // namespace

FunctionOverloads::FunctionOverloads() = default;
FunctionOverloads::~FunctionOverloads() = default;

void FunctionOverloads::Add(const FunctionKey& key) {
    ReserveAnswers();
    const auto [found, isNew] = m_candidates.try_emplace(&key);
    Candidates& candidates = found->second;
    try {
        candidates.push_back(&key);
    } catch (...) {
        if (isNew) {  // It stands under the address of a key that is not kept.
            m_candidates.erase(found);
        }
        throw;
    }
    const TypeRefVec<VariableTypeRef>& types = key.GetInputTypes();
    if (std::none_of(types.begin(), types.end(), std::mem_fn(&VariableTypeRef::IsAnyType))) {
        SetAnswer(key, ChooseByScore(candidates, key).key);
        return;
    }
    // A wild card may fit, and be one too many, where any other key is asked for.
    for (const FunctionKey* const candidate : candidates) {
        SetAnswer(*candidate, ChooseByScore(candidates, *candidate).key);
    }
}

void FunctionOverloads::ReserveAnswers() {
    constexpr std::size_t kFirstSize = 64;
    if (4 * (m_answerCount + 1) <= m_answers.size()) {
        return;
    }
    std::vector<Answer> answers(std::max(kFirstSize, 2 * m_answers.size()));
    m_answers.swap(answers);
    m_answerMask = m_answers.size() - 1;
    for (const Answer& answer : answers) {
        if (answer.signature != 0) {
            m_answers[FindPlace(answer.signature)] = answer;
        }
    }
}

void FunctionOverloads::SetAnswer(const FunctionKey& query, const FunctionKey* winner) noexcept {
    const uint64 signature = SignatureOf(query);
    if (signature == 0) {
        return;
    }
    Answer& answer = m_answers[FindPlace(signature)];
    m_answerCount += answer.signature == 0;
    answer = {signature, winner};
}

const FunctionKey* FunctionOverloads::FindExact(const FunctionKey& key) const {
    const auto found = m_candidates.find(&key);
    if (found == m_candidates.end()) {
        return nullptr;
    }
    for (const FunctionKey* const candidate : found->second) {
        if (candidate->AreKeysExactlyEqual(key)) {
            return candidate;
        }
    }
    return nullptr;
}

FunctionOverloads::Choice FunctionOverloads::ChooseAmongCandidates(
    const FunctionKey& query) const noexcept {
    const auto found = m_candidates.find(&query);
    return found == m_candidates.end() ? Choice{nullptr, false}
                                       : ChooseByScore(found->second, query);
}

FunctionOverloads::Choice FunctionOverloads::ChooseByScore(const Candidates& candidates,
                                                           const FunctionKey& query) noexcept {
    const FunctionKey* best = nullptr;
    int bestScore = std::numeric_limits<int>::max();
    for (const FunctionKey* const candidate : candidates) {
        const int score = CountWildCardsUsed(query, *candidate);
        if (score == bestScore) {
            return {nullptr, true};
        }
        if (score != kNoFit && score < bestScore) {
            best = candidate;
            bestScore = score;
        }
    }
    return {best, false};
}

void FunctionOverloads::Fail(const FunctionKey& query, const Choice& choice) {
    LUM_FAIL(choice.isAmbiguous ? LumError::AmbiguousOverload : LumError::FunctionNotFound,
             query.ToString());
}

}  // namespace lum::core
