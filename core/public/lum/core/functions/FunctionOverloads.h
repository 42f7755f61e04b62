#pragma once

#include <cstddef>
#include <unordered_map>
#include <vector>

#include "lum/core/Export.h"
#include "lum/core/functions/FunctionKey.h"

namespace lum::core {

/// The keys of a registry by name, container and number of inputs, and the choice among those that
/// agree in all three. It serves FunctionRegistryMap, which stores the keys.
///
/// Choosing, among the candidates of a query, goes in the order in which they were added. Each gets
/// a score that starts at 0. At each position the candidate fits where both have AnyType or types
/// of one store type: precision, collation and element types do not count. It also fits, for one
/// more point, where it has AnyType and the query a type, which must be that of a tuple or a
/// collection unless the container is Vector. A candidate that does not fit somewhere is out. The
/// lowest score wins, but the first candidate that scores as the best before it did ends the
/// choice: the query is ambiguous, even if a better candidate would follow.
///
/// Threads: look-ups may run on any threads at once; Add needs exclusion from all other access.
/// Ownership: keeps the addresses of keys, which must outlive it.
/// Errors: std::bad_alloc by Add, which then has added nothing.
/// Cost: a look-up by the one or two types of some key is a probe of a flat table. Any other, as one
/// that needs a wild card, is a find in a hash table and a walk over the candidates. Neither
/// allocates. Add walks over the candidates of its key; with a wild card, once for each of them.
class LUM_CORE_API FunctionOverloads {
public:
    struct Choice {
        /// The winner; null where there is none.
        const FunctionKey* key;
        bool isAmbiguous;
    };

    FunctionOverloads();
    ~FunctionOverloads();
    FunctionOverloads(const FunctionOverloads&) = delete;
    FunctionOverloads& operator=(const FunctionOverloads&) = delete;

    void Add(const FunctionKey& key);
    /// The first added key that AreKeysExactlyEqual holds for; null where there is none.
    const FunctionKey* FindExact(const FunctionKey& key) const;
    Choice Choose(const FunctionKey& query) const noexcept {
        const uint64 signature = SignatureOf(query);
        if (signature != 0 && m_answerCount != 0) {
            const Answer& answer = m_answers[FindPlace(signature)];
            if (answer.winner != nullptr) {
                return {answer.winner, false};
            }
        }
        return ChooseAmongCandidates(query);
    }

    /// Throws what a choice without winner means.
    /// Errors: AmbiguousOverload, FunctionNotFound, with the text of the query.
    [[noreturn]] static void Fail(const FunctionKey& query, const Choice& choice);

private:
    // The first key of a name, container and number of inputs stands for all of them.
    struct OverloadHash {
        std::size_t operator()(const FunctionKey* key) const {
            return key->GetPotentialOverloadHash();
        }
    };
    struct OverloadEqual {
        bool operator()(const FunctionKey* a, const FunctionKey* b) const noexcept {
            return a->IsPotentialOverloadCandidate(*b);
        }
    };
    using Candidates = std::vector<const FunctionKey*>;

    // What a query of the types of some key finds, worked out when keys are added.
    struct Answer {
        uint64 signature = 0;                 // 0 in an empty place.
        const FunctionKey* winner = nullptr;  // Null where the query is ambiguous.
    };

    static unsigned int NumberOf(const Type* type) noexcept {
        constexpr unsigned int kAnyType = 0xFF;
        return type == nullptr ? kAnyType : static_cast<unsigned int>(type->GetStoreType());
    }
    /// All that a choice looks at, in one number; 0 for a query that has none: one of no input or
    /// of more than two, or of a name whose id is beyond those that are given out.
    static uint64 SignatureOf(const FunctionKey& query) noexcept {
        const TypeRefVec<VariableTypeRef>& types = query.GetInputTypes();
        const uint64 name = query.GetName().GetStringId();
        const std::size_t count = types.size();
        if (count - 1 > 1 || name >> 32 != 0) {
            return 0;
        }
        // One input counts as two that are the same: no processor could foresee a branch here.
        return name << 32 | static_cast<uint64>(query.GetInputArgContainer()) << 24 | count << 16 |
               NumberOf(types.front()) << 8 | NumberOf(types.back());
    }
    /// The place of a signature, or the empty one where it belongs.
    std::size_t FindPlace(uint64 signature) const noexcept {
        // Fibonacci hashing (Knuth, 1973): the high bits of the product depend on all bits.
        std::size_t place = signature * 0x9E3779B97F4A7C15 >> 32 & m_answerMask;
        while (m_answers[place].signature != signature && m_answers[place].signature != 0) {
            place = (place + 1) & m_answerMask;
        }
        return place;
    }

    Choice ChooseAmongCandidates(const FunctionKey& query) const noexcept;
    static Choice ChooseByScore(const Candidates& candidates, const FunctionKey& query) noexcept;
    void ReserveAnswers();
    void SetAnswer(const FunctionKey& query, const FunctionKey* winner) noexcept;

    std::unordered_map<const FunctionKey*, Candidates, OverloadHash, OverloadEqual> m_candidates;
    // Open addressing; a power of two of places, of which at most a quarter is taken. Most look-ups
    // end here: a table of the standard costs a division and a chain, whose length is a branch that
    // goes wrong.
    std::vector<Answer> m_answers;
    std::size_t m_answerCount = 0;
    std::size_t m_answerMask = 0;
};

}  // namespace lum::core
