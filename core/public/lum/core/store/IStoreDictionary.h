#pragma once

#include "lum/core/Export.h"
#include "lum/core/store/DictionaryCursor.h"
#include "lum/core/store/SpecialKind.h"
#include "lum/core/types/Type.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

/// A collection of values under typed keys, and possibly under special keys.
///
/// Threads, ownership: those of the concrete collection; references are good while it lives and
///   stays unchanged.
/// Errors: std::out_of_range, "invalid unordered_map<K, T> key", for a key that is not there.
template <typename K, typename V>
class LUM_CORE_API IStoreDictionary {
public:
    virtual ~IStoreDictionary() = default;
    virtual bool HasSpecialKeys() const = 0;
    virtual const Type* GetKeyType() const = 0;
    virtual const V& GetValueForSpecialKey(SpecialKind kind) const = 0;
    virtual const V& GetValue(const K& key) const = 0;
    /// All entries, those under special keys among them.
    virtual lumsize_t GetCount() const = 0;
    virtual lumsize_t GetSpecialKeyCount() const = 0;
    virtual bool HasSpecialKey(SpecialKind kind) const = 0;
    virtual bool HasKey(const K& key) const = 0;
    /// Cursors at the first entry under a normal key, and under a special one.
    virtual DictionaryCursor<K, V> GetEntries() const = 0;
    virtual DictionaryCursor<SpecialKind, V> GetSpecialEntries() const = 0;
};

}  // namespace lum::core
