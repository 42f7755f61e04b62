// The destructors of the interfaces, whose tables of virtual functions then stand here alone.
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/IStoreCollection.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/IUniformCollection.h"

namespace lum::core {

IStoreCollection::~IStoreCollection() = default;
IStoreValueIterator::~IStoreValueIterator() = default;
IUniformCollection::StoreValueIterable::~StoreValueIterable() = default;
IUniformCollection::~IUniformCollection() = default;
ArrayWithIndices::~ArrayWithIndices() = default;
SpecialKindIterable::~SpecialKindIterable() = default;
IStoreTable::ColumnIterable::~ColumnIterable() = default;
IStoreTable::~IStoreTable() = default;

}  // namespace lum::core
