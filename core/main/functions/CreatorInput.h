#pragma once

#include <bit>
#include <type_traits>
#include <vector>

#include "lum/core/Check.h"
#include "lum/core/functions/ElementTypes.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/store/ValueUtil.h"

namespace lum::core {

// The one value that a built-in creator takes.
// Errors: OneInputNeeded for any other number of values, or for null.
inline const SV& GetCreatorInput(const std::vector<SV>& values) {
    LUM_CHECK(values.size() == 1 && values[0] != nullptr, LumError::OneInputNeeded);
    return values[0];
}

// The constant of a creator. Errors: also those of FetchStoreValue.
template <FunctionElement T>
T GetCreatorConstant(const std::vector<SV>& values) {
    return FetchStoreValue<T>(GetCreatorInput(values));
}

// Membership in the set of a creator, which it keeps alive. The set's own look-up answers, so that
// strings are compared by its collation, and reals by their bits.
template <FunctionElement T>
class CreatorSet {
public:
    // Errors: OneInputNeeded; TypeMismatchExpected for a set of other elements; NotTypedSet for
    // what is no set.
    explicit CreatorSet(const std::vector<SV>& values) : m_value(GetCreatorInput(values)) {
        // Element types share storage, so the storage does not tell them apart.
        LUM_CHECK(m_value->GetStoreType() != StoreType::Set ||
                      TypeTraits<T>::IsMatchingType(m_value->AsSet().GetElementType()),
                  LumError::TypeMismatchExpected);
        m_set = &m_value->AsTypedSet<Storage>();
    }

    bool Contains(const T& element) const {
        if constexpr (std::is_same_v<T, Storage>) {
            return m_set->Contains(element);
        } else if constexpr (std::is_same_v<T, bool>) {
            return m_set->Contains(element ? 1 : 0);
        } else {
            return m_set->Contains(std::bit_cast<Storage>(element));
        }
    }

    // The same of a column: 1 in each place of `out` whose cell is a member, else 0.
    void ContainsEach(const CellT<T>* cells, unsigned char* out, uint64 count) const {
        if constexpr (std::is_same_v<T, bool>) {
            // A byte of a column may be any number, of which all but 0 are true; members are not.
            for (uint64 index = 0; index < count; ++index) {
                out[index] = Contains(Cell<T>::Load(cells[index])) ? 1 : 0;
            }
        } else {
            m_set->ContainsEach({reinterpret_cast<const Storage*>(cells), count}, {out, count});
        }
    }

private:
    using Storage = typename TypeTraits<T>::Storage;

    SV m_value;
    const ITypedSet<Storage>* m_set;
};

}  // namespace lum::core
